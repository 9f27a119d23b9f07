// Small helpers shared by the engine's units.
#pragma once

#include "common/MekGenerics.h"

namespace tavo {

// The characters a construct name may not hold: blank and '"#()[]?:$&;<>.
inline constexpr char16_t SInvalidNameCharacters[] = u" '\"#()[]?:$&;<>";

// Raises SUnexpectedCharacters naming the whole name and its first invalid
// character, when it has one.
void CheckConstructName(StringView Name);

}  // namespace tavo

namespace tavo {

// The name of a copy of a construct: "-copy" behind the name, then a number
// that counts up for copies of copies.
String RenameCopy(StringView Name);

}  // namespace tavo
