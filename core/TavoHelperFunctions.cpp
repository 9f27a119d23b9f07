#include "core/TavoHelperFunctions.h"

#include "core/TavoConsts.h"

namespace tavo {

void CheckConstructName(StringView Name) {
  size_t Position = Name.find_first_of(SInvalidNameCharacters);
  if (Position != StringView::npos)
    throw ETavoException(Format(SUnexpectedCharacters, Name, Name.substr(Position, 1)));
}

}  // namespace tavo
