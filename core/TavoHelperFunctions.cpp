#include "core/TavoHelperFunctions.h"

#include "core/TavoConsts.h"

namespace tavo {

void CheckConstructName(StringView Name) {
  size_t Position = Name.find_first_of(SInvalidNameCharacters);
  if (Position != StringView::npos)
    throw ETavoException(Format(SUnexpectedCharacters, Name, Name.substr(Position, 1)));
}

}  // namespace tavo

namespace tavo {

String RenameCopy(StringView Name) {
  constexpr StringView Suffix = u"-copy";
  size_t At = Name.rfind(Suffix);
  if (At != StringView::npos) {
    StringView Number = Name.substr(At + Suffix.size());
    int32_t Value = 1;
    if (Number.empty() || TryStrToInt(Number, Value)) return String(Name.substr(0, At)) + String(Suffix) + IntToStr(int64_t(Value) + 1);
  }
  return String(Name) + String(Suffix);
}

}  // namespace tavo
