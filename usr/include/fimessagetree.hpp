#pragma once

#include "fitreeiterator.hpp"
#include "kellogsource.hpp"

// A message as a tree, for a writer to walk: the broker implements it. A tree has up to three contents, each with an
// iterator that starts at its root and is null where the content is missing.
//
// Texts are zero-terminated, the tree's, and stay as long as it does.
class OXR_EXPORT FIMessageTree : public KelOwnedLogSource {
 public:
  ~FIMessageTree() override;

  // Gives the model that the message follows; null for none.
  virtual const unsigned short* getProjectId() const = 0;
  // Tell how many models that one leans on, and give each; `index` counts from 0.
  virtual int getNumProjDependencies() const = 0;
  virtual const unsigned short* getProjDependency(int index) const = 0;
  // Give what the parser said at the message's start and end.
  virtual WorkerInfoPtr getMsgStartWorkerInfo() const = 0;
  virtual WorkerInfoPtr getMsgEndWorkerInfo() const = 0;
  // Give a place on the header, the content and the footer of the message; a null one where it has none.
  virtual FITreeIterator getMsgHeaderIterator() const = 0;
  virtual FITreeIterator getMsgContentIterator() const = 0;
  virtual FITreeIterator getMsgFooterIterator() const = 0;
  // Gives the namespace of the message, null for none. This operation is unused.
  virtual const unsigned short* getMsgNamespaceURI() const = 0;

  // Writes the message to the trace: its models, whether there are properties of its start and end, and a record for
  // each node of its content. Header and footer are left out. The tree is walked whatever the trace level is, and
  // records are written above 2.
  virtual void traceTree() const;
  // Writes the node that the iterator stands on and all below it, each as an entry with what the node is called, where
  // it is defined, its value and its default (as PWFData::getDebugString shows them), how often it may occur, and which
  // properties it has. A null iterator writes nothing. The iterator ends where it began.
  virtual void traceSubTree(FITreeIterator& it) const;

 private:
  objectHeader header{"QVTT", 32, 48};
};
