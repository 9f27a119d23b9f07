// Text of the rule language: joining, comparing, searching, case and the
// formatted string.
#pragma once

#include "packages/TavoPackages.h"

namespace tavo {

// Fills the control text with the items, one conversion per item, searching
// the rewritten text anew each time. "%n" is a line end; an item with no
// conversion left is appended behind a blank.
String CLIPSFormat(const String& Control, const IValueVector& Items);

class TStrFormatFunction : public TTavoUserFunction {
  TAVO_CLASS(TStrFormatFunction, TTavoUserFunction)
 public:
  void InitMetaData() override;
  void Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) override;
  using TTavoUserFunction::Call;
};

class TSymCatFunction : public TTavoUserFunction {
  TAVO_CLASS(TSymCatFunction, TTavoUserFunction)
 public:
  void InitMetaData() override;
  void Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) override;
  using TTavoUserFunction::Call;
};

class TLowerCaseFunction : public TTavoUserFunction {
  TAVO_CLASS(TLowerCaseFunction, TTavoUserFunction)
 public:
  void InitMetaData() override;
  void Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) override;
  using TTavoUserFunction::Call;
};

class TStrCatFunction : public TTavoUserFunction {
  TAVO_CLASS(TStrCatFunction, TTavoUserFunction)
 public:
  void InitMetaData() override;
  void Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) override;
  using TTavoUserFunction::Call;
};

class TStrCompFunction : public TTavoUserFunction {
  TAVO_CLASS(TStrCompFunction, TTavoUserFunction)
 public:
  void InitMetaData() override;
  void Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) override;
  using TTavoUserFunction::Call;
};

class TStrIndexFunction : public TTavoUserFunction {
  TAVO_CLASS(TStrIndexFunction, TTavoUserFunction)
 public:
  void InitMetaData() override;
  void Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) override;
  using TTavoUserFunction::Call;
};

class TStrLengthFunction : public TTavoUserFunction {
  TAVO_CLASS(TStrLengthFunction, TTavoUserFunction)
 public:
  void InitMetaData() override;
  void Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) override;
  using TTavoUserFunction::Call;
};

class TSubStringFunction : public TTavoUserFunction {
  TAVO_CLASS(TSubStringFunction, TTavoUserFunction)
 public:
  void InitMetaData() override;
  void Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) override;
  using TTavoUserFunction::Call;
};

class TUpperCaseFunction : public TTavoUserFunction {
  TAVO_CLASS(TUpperCaseFunction, TTavoUserFunction)
 public:
  void InitMetaData() override;
  void Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) override;
  using TTavoUserFunction::Call;
};

class TStringPackage : public TUserPackage {
  TAVO_CLASS(TStringPackage, TUserPackage)
 public:
  using TUserPackage::TUserPackage;

 protected:
  void CreateFunctions() override;
};

}  // namespace tavo
