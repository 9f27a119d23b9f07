// Exception base of the common layer.
#pragma once

#include <exception>
#include <string>

#include "MekStrings.h"

namespace tavo {

// Failures of the common layer's own containers and casts.
inline constexpr char16_t SListIndexError[] = u"List index out of bounds (%d)";
inline constexpr char16_t SIntfCastError[] = u"Interface not supported";
inline constexpr char16_t SStreamNotWritable[] = u"Stream is not open for writing";
inline constexpr char16_t SFileOpenError[] = u"Cannot open file \"%s\". %s";

// Base of every failure the library raises: a message in 16-bit text,
// what() gives it in UTF-8.
class EMekException : public std::exception {
 public:
  explicit EMekException(String Message);
  const String& Message() const noexcept { return FMessage; }
  const char* what() const noexcept override { return FUtf8.c_str(); }

 private:
  String FMessage;
  std::string FUtf8;
};

// Ends the current execution without a message; handlers that see it pass
// over it silently.
class EAbort : public EMekException {
 public:
  EAbort() : EMekException(String()) {}
};

}  // namespace tavo
