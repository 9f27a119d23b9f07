// What Tab does at the prompt: the word before the cursor is completed to
// the function and construct names that begin with it, as far as they agree.
// Kept apart from the line editor so that it is tested without a terminal.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tavo {

struct TCompletion {
  // Goes after the word: the rest of the one name that fits followed by a
  // blank, or what all the names that fit share beyond the word.
  std::string Insert;
  // Every name that fits, sorted, each once.
  std::vector<std::string> Matches;
};

// The word that ends at Cursor: what follows the last blank, parenthesis,
// quote, comment mark or connective before it.
std::string_view WordBefore(std::string_view Line, size_t Cursor);

// The completion of Word among Names (in any order, repeats allowed). An
// empty word fits no name: Tab there is left to indent.
TCompletion Complete(std::string_view Word, std::vector<std::string> Names);

}  // namespace tavo
