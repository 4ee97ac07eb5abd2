#include "fimessagetree.hpp"

FIMessageTree::~FIMessageTree() = default;
