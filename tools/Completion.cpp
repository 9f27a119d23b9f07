// Completion of words at the prompt.
#include "tools/Completion.h"

#include <algorithm>

namespace tavo {

std::string_view WordBefore(std::string_view Line, size_t Cursor) {
  Cursor = std::min(Cursor, Line.size());
  if (Cursor == 0) return {};
  // Function names hold signs such as <= and $, so only what the lexer
  // always takes as a separator ends a word.
  constexpr std::string_view Separators = " \t\r\n()\";&|~";
  const size_t Start = Line.find_last_of(Separators, Cursor - 1);
  return Start == std::string_view::npos ? Line.substr(0, Cursor) : Line.substr(Start + 1, Cursor - Start - 1);
}

TCompletion Complete(std::string_view Word, std::vector<std::string> Names) {
  TCompletion Result;
  if (Word.empty()) return Result;
  std::sort(Names.begin(), Names.end());
  Names.erase(std::unique(Names.begin(), Names.end()), Names.end());
  for (std::string& Name : Names)
    if (Name.size() >= Word.size() && Name.compare(0, Word.size(), Word) == 0) Result.Matches.push_back(std::move(Name));
  if (Result.Matches.empty()) return Result;
  const std::string& First = Result.Matches.front();
  if (Result.Matches.size() == 1) {
    Result.Insert = First.substr(Word.size()) + ' ';
    return Result;
  }
  // Sorted, the first and the last differ soonest: what they share, all share.
  const std::string& Last = Result.Matches.back();
  size_t Shared = Word.size();
  while (Shared < First.size() && Shared < Last.size() && First[Shared] == Last[Shared]) ++Shared;
  // Names are UTF-8: a character the two begin alike is not cut in two.
  while (Shared > Word.size() && Shared < First.size() && (First[Shared] & 0xC0) == 0x80) --Shared;
  Result.Insert = First.substr(Word.size(), Shared - Word.size());
  return Result;
}

}  // namespace tavo
