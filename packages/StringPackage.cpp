#include "packages/StringPackage.h"

#include "core/TavoVectors.h"

namespace tavo {

namespace {




String StringArgument(TFunctionCall& FunCall, int Index, TTavoContext* Context) {
  return FunCall.Argument(Index, Context)->GetAsString();
}

String JoinArguments(TFunctionCall& FunCall, TTavoContext* Context) {
  String Result;
  for (int I = 0; I < FunCall.GetArgumentCount(); ++I) Result += StringArgument(FunCall, I, Context);
  return Result;
}

// A string stays a string; anything else comes back as an atom.
ITavoValue SameKind(const ITavoValue& Source, String Text) {
  return Make<TTavoValue>(std::move(Text), Source->GetDType() == dtString ? dtString : dtAtom);
}

bool IsFormatFlag(char16_t C) { return C == u'%' || C == u'-' || C == u'.' || (C >= u'0' && C <= u'9'); }

// How an item that finds no conversion is appended.
String SurplusText(const TTavoValue& Item) {
  switch (Item.GetDType()) {
    case dtString:
      return Item.GetAsString();
    case dtFactId:
    case dtExternalAddress:
      return IntToStr(Item.GetAsInteger());
    case dtList:
      return u"(" + Item.GetToString() + u")";
    default:
      return Item.GetToString();
  }
}

void ReplaceLineEnds(String& Text) {
  for (size_t At = Text.find(u"%n"); At != String::npos; At = Text.find(u"%n", At + 2)) Text.replace(At, 2, u"\r\n");
}

}  // namespace

String CLIPSFormat(const String& Control, const IValueVector& Items) {
  String Result = Control;
  const int Count = Items ? Items->GetValueCount() : 0;
  for (int I = 0; I < Count; ++I) {
    const TTavoValue& Item = Items->Get(I) ? *Items->Get(I) : *FCNil;
    for (;;) {
      const size_t P = Result.find(u'%');
      if (P == String::npos) {
        Result += u' ';
        Result += SurplusText(Item);
        break;
      }
      // Flags, width and precision are skipped; "%%" is not set apart.
      size_t Q = P + 1;
      while (Q < Result.size() && IsFormatFlag(Result[Q])) ++Q;
      const char16_t Conversion = Q < Result.size() ? Result[Q] : u'\0';
      if (Q == P + 1 && Conversion == u'n') {
        // A line end takes no item: look again for this one.
        Result.replace(P, 2, u"\r\n");
        continue;
      }
      const StringView Head = StringView(Result).substr(0, Q + 1);
      const StringView Tail = Q < Result.size() ? StringView(Result).substr(Q + 1) : StringView();
      switch (Conversion) {
        case u'd':
        case u'u':
        case u'x':
          Result = Format(Head, Item.GetAsInteger()) + String(Tail);
          break;
        case u'e':
        case u'f':
        case u'g':
        case u'm':
          Result = Format(Head, Item.GetAsFloat()) + String(Tail);
          break;
        case u'p':
          Result = Format(Head, static_cast<const void*>(Item.GetAsExternalAddress())) + String(Tail);
          break;
        case u's':
          Result = Format(Head, Item.GetToString()) + String(Tail);
          break;
        default:
          // No conversion here: the item is dropped and the next one meets
          // the same "%".
          break;
      }
      break;
    }
  }
  ReplaceLineEnds(Result);
  return Result;
}

TAVO_SETUP void TStrFormatFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"str-format", u"Returns the control string with its conversions filled by the other arguments",
           u"<string-expression> <expression>+", 2, AnyArgumentCount);
}

void TStrFormatFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  String Control = StringArgument(FunCall, 0, Context);
  IValueVector Items = Make<TValueVector>();
  Items->Reserve(FunCall.GetArgumentCount() - 1);
  for (int I = 1; I < FunCall.GetArgumentCount(); ++I) Items->Add(FunCall.EvaluateArgument(I, Context));
  Result = Make<TTavoValue>(CLIPSFormat(Control, Items), dtString);
}

TAVO_SETUP void TSymCatFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"sym-cat", u"Returns a symbol of its arguments joined", u" <expression>*", 0, AnyArgumentCount);
}

void TSymCatFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  Result = Make<TTavoValue>(JoinArguments(FunCall, Context), dtAtom);
}

TAVO_SETUP void TLowerCaseFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"lowcase", u"Returns its argument in lower case", u" <string-or-symbol-expression>", 1, 1);
}

void TLowerCaseFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  ITavoValue Value = FunCall.EvaluateArgument(0, Context);
  Result = SameKind(Value, LowerCase(Value->GetAsString()));
}

TAVO_SETUP void TStrCatFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"str-cat", u"Returns a string of its arguments joined", u" <lexeme-expression>*", 0, AnyArgumentCount);
}

void TStrCatFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  Result = Make<TTavoValue>(JoinArguments(FunCall, Context), dtString);
}

TAVO_SETUP void TStrCompFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"str-compare",
           u"Returns a negative integer, 0 or a positive integer as the first argument sorts before, with or "
           u"after the second, case-sensitive",
           u" <lexeme-expression> <lexeme-expression>", 2, 2);
}

void TStrCompFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  String First = StringArgument(FunCall, 0, Context);
  String Second = StringArgument(FunCall, 1, Context);
  Result = Make<TTavoValue>(int32_t(CompareStr(First, Second)), dtInteger);
}

TAVO_SETUP void TStrIndexFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"str-index",
           u"Returns the position, counted from 1, of the first argument inside the second, or FALSE",
           u" <lexeme-expression> <lexeme-expression>", 2, 2);
}

void TStrIndexFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  String Needle = StringArgument(FunCall, 0, Context);
  String Text = StringArgument(FunCall, 1, Context);
  // An empty text is found nowhere.
  size_t At = Needle.empty() ? String::npos : Text.find(Needle);
  Result = At == String::npos ? FCFalse : Make<TTavoValue>(int32_t(At + 1), dtInteger);
}

TAVO_SETUP void TStrLengthFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"str-length", u"Returns the number of characters of its argument", u" <lexeme-expression>", 1,
           1);
}

void TStrLengthFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  Result = Make<TTavoValue>(int32_t(StringArgument(FunCall, 0, Context).size()), dtInteger);
}

TAVO_SETUP void TSubStringFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"sub-string",
           u"Returns the characters of the text from the start to the end position, both counted from 1",
           u" <start-integer-expression> <end-integer-expression> <lexeme-expression>", 3, 3);
}

void TSubStringFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  int32_t Start = FunCall.Argument(0, Context)->GetAsInteger();
  int32_t End = FunCall.Argument(1, Context)->GetAsInteger();
  String Text = StringArgument(FunCall, 2, Context);
  // 32-bit arithmetic: far-apart positions wrap rather than overflow.
  int32_t Count = int32_t(uint32_t(End) - uint32_t(Start) + 1u);
  if (Start < 1 || int64_t(Text.size()) < Start || Count < 0)
    throw ETavoException(Format(SInvalidSubstrParameters, Start, Count));
  Result = Make<TTavoValue>(Text.substr(size_t(Start) - 1, size_t(Count)), dtString);
}

TAVO_SETUP void TUpperCaseFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"upcase", u"Returns its argument in upper case", u" <lexeme-expression>", 1, 1);
}

void TUpperCaseFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  ITavoValue Value = FunCall.EvaluateArgument(0, Context);
  Result = SameKind(Value, UpperCase(Value->GetAsString()));
}

void TStringPackage::CreateFunctions() {
  TUserPackage::CreateFunctions();
  TUserFunctionList& Functions = GetFunctions();
  Functions.Add(Make<TStrFormatFunction>());
  Functions.Add(Make<TSymCatFunction>());
  Functions.Add(Make<TLowerCaseFunction>());
  Functions.Add(Make<TStrCatFunction>());
  Functions.Add(Make<TStrCompFunction>());
  Functions.Add(Make<TStrIndexFunction>());
  Functions.Add(Make<TStrLengthFunction>());
  Functions.Add(Make<TSubStringFunction>());
  Functions.Add(Make<TUpperCaseFunction>());
}

}  // namespace tavo
