#pragma once

// The events that a BitstreamWorkerStateChecker judges, each with the operation that reports it. The numbers are part
// of the contract, mismatches included: endMessage reports no event, and projectDependencies reports the event of a
// getter. Any other number is a value, too, and no event: it is refused.
enum EBitstreamWorkerCall : int {
  CALL_INITIALIZE_PARSE = 0,
  CALL_SET_HANDLER = 1,
  CALL_GET_HANDLER = 2,
  CALL_PARSE = 3,
  CALL_PARSE_FIRST = 4,
  CALL_PARSE_NEXT = 5,
  CALL_HAS_NEXT = 6,
  CALL_GET_BYTES_PARSED = 7,  // getNumBytesParsed
  CALL_INITIALIZE_WRITE = 8,
  CALL_SET_TREE = 9,
  CALL_GET_TREE = 10,
  CALL_WRITE = 11,
  CALL_GET_DESCRIPTOR = 12,
  CALL_SET_DESCRIPTOR = 13,
  CALL_UNUSED_14 = 14,  // reported by nothing
  CALL_START_ELEMENT_ID = 15,
  CALL_START_ELEMENT_NAME = 16,
  CALL_END_ELEMENT_ID = 17,
  CALL_END_ELEMENT_NAME = 18,
  CALL_START_MESSAGE = 19,
  CALL_END_MESSAGE = 20,    // reported by nothing
  CALL_START_CONTENT = 21,  // startMessageContent, by number and by name
  CALL_END_CONTENT = 22,    // endMessageContent, by number and by name
  CALL_DATA = 23,           // data, simpleElement
  CALL_PROJECT_ID = 24,
  CALL_PROJECT_DEPENDENCIES = 25,  // reported by nothing
  CALL_GET_PROJECT_ID = 26,
  CALL_GET_PROJECT_DEPENDENCY = 27,  // getNumProjDependencies, getProjDependency, projectDependencies
  CALL_GET_MSG_START_INFO = 28,
  CALL_GET_MSG_END_INFO = 29,
  CALL_GET_MSG_HEADER = 30,
  CALL_GET_MSG_CONTENT = 31,
  CALL_GET_MSG_FOOTER = 32,
  CALL_START_EMBEDDED = 33,  // both startEmbeddedMessage
  CALL_END_EMBEDDED = 34,
};
