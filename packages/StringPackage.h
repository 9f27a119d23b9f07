// Text of the rule language: joining, comparing, searching, case and the
// formatted string.
#pragma once

#include "packages/TavoPackages.h"

namespace tavo {

// Fills the control text with the items, one conversion per item, searching
// the rewritten text anew each time. "%n" is a line end; an item with no
// conversion left is appended behind a blank.
String CLIPSFormat(const String& Control, const IValueVector& Items);

TAVO_FUNCTION(TStrFormatFunction)

TAVO_FUNCTION(TSymCatFunction)

TAVO_FUNCTION(TLowerCaseFunction)

TAVO_FUNCTION(TStrCatFunction)

TAVO_FUNCTION(TStrCompFunction)

TAVO_FUNCTION(TStrIndexFunction)

TAVO_FUNCTION(TStrLengthFunction)

TAVO_FUNCTION(TSubStringFunction)

TAVO_FUNCTION(TUpperCaseFunction)

class TStringPackage : public TUserPackage {
  TAVO_CLASS(TStringPackage, TUserPackage)
 public:
  using TUserPackage::TUserPackage;

 protected:
  void CreateFunctions() override;
};

}  // namespace tavo
