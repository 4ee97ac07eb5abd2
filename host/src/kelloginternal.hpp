#pragma once

#include <memory>
#include <string>

#include "kellog.hpp"

// What the sources of the log share among themselves.
namespace oxr {

// Hands the record to the sink in force, one call at a time. A sink that fails is ignored: the log must not change what
// the traced function does.
void writeRecord(const LogRecord& record) noexcept;

// A handle for an entry: 1, 2, ... over all threads. 0 stays for functions that traced none.
long nextTraceHandle();

// "OXR5502E": the name of a message in the catalogue, of the low 16 bits of its number and the severity in the top
// ones.
std::string messageName(int messageNumber);

// "0x" and lower-case hexadecimal digits.
std::string addressText(const void* pointer);

// The sink that the environment variable KELHOST_LOG names. A file that cannot be opened is replaced by standard error.
std::shared_ptr<LogSink> makeHostSink();

}  // namespace oxr
