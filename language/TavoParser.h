// The parser of the rule language.
#pragma once

#include <vector>

#include "core/TavoConsts.h"

namespace tavo {

// A failure to read rule-language text: where it happened and, when the
// parser knows, what it would have accepted there.
class ETavoParseException : public ETavoException {
 public:
  ETavoParseException(String Message, int LineNumber, std::vector<String> Expected = {})
      : ETavoException(std::move(Message)), LineNumber(LineNumber), Expected(std::move(Expected)) {}

  int LineNumber;
  std::vector<String> Expected;
};

// The parser itself joins this unit with the parser frame.

}  // namespace tavo
