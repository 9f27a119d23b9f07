#include "TavoStreamToken.h"

#include <cmath>

#include "common/MekExceptions.h"
#include "common/MekFormat.h"
#include "core/TavoContext.h"
#include "core/TavoValue.h"

namespace tavo {

namespace {

// Object and external-address tokens carry their pointer as the number; a
// user-space pointer fits a double's mantissa whole.
void* NumberToPointer(double Number) {
  if (!std::isfinite(Number) || std::fabs(Number) >= 9.0e15) return nullptr;
  return reinterpret_cast<void*>(intptr_t(Number));
}

double PointerToNumber(const void* Pointer) { return double(reinterpret_cast<intptr_t>(Pointer)); }

}  // namespace

void TTavoStreamToken::Assign(const TPersistent* Source) {
  if (auto* Token = dynamic_cast<const TTavoStreamToken*>(Source)) {
    FDataType = Token->FDataType;
    FLineNumber = Token->FLineNumber;
    FNumber = Token->FNumber;
    FText = Token->FText;
    SetTag(Token->GetTag());
    return;
  }
  TCloneableObject::Assign(Source);
}

void TTavoStreamToken::AssignTo(TPersistent* Dest) const {
  if (auto* Token = dynamic_cast<TTavoStreamToken*>(Dest))
    Token->Assign(this);
  else
    TCloneableObject::AssignTo(Dest);
}

bool TTavoStreamToken::Equals(const TCloneableObject* Other) const {
  return Equals(static_cast<const TPersistent*>(Other));
}

bool TTavoStreamToken::Equals(const TPersistent* Other) const {
  auto* Token = dynamic_cast<const TTavoStreamToken*>(Other);
  return Token && Token->FDataType == FDataType && Token->FLineNumber == FLineNumber &&
         Token->FNumber == FNumber;
}

String TTavoStreamToken::ToString() const {
  switch (FDataType) {
    case dtString:
      return u"\\\"" + FText + u"\"\\";
    case dtInteger:
      return IntToStr(TruncToInt32(FNumber));
    case dtVariable:
      return u"?" + FText;
    case dtFloat:
      return Format(u"%.4f", FNumber);
    case dtMultiVariable:
      return u"$?" + FText;
    default:
      return FText.empty() ? String(1, char16_t(FDataType)) : FText;
  }
}

ITavoValue TTavoStreamToken::Value() const {
  switch (FDataType) {
    case dtAtom:
      if (FText == FCTrue->GetAsAtom()) return FCTrue;
      if (FText == FCFalse->GetAsAtom()) return FCFalse;
      if (LowerCase(FText) == u"nil") return FCNil;
      return Make<TTavoValue>(FText, dtAtom);
    case dtString:
    case dtVariable:
    case dtMultiVariable:
    case dtSlot:
    case dtMultiSlot:
      return Make<TTavoValue>(FText, TTavoType(FDataType));
    case dtInteger:
    case dtFactId:
    case dtDescriptor:
      return Make<TTavoValue>(TruncToInt32(FNumber), TTavoType(FDataType));
    case dtFloat:
      return Make<TTavoValue>(FNumber);
    case dtObject:
      return Make<TTavoValue>(static_cast<TObject*>(NumberToPointer(FNumber)), false);
    case dtExternalAddress: {
      ITavoValue Result = Make<TTavoValue>();
      Result->SetAsExternalAddress(NumberToPointer(FNumber));
      return Result;
    }
    case dtNone:
      if (FText == u"EOF") return FCEOF;
      break;
  }
  return Make<TTavoValue>(IntToStr(FDataType), dtString);
}

ITavoValue TTavoStreamToken::Value(TObject* Context) const {
  auto* TavoContext = dynamic_cast<TTavoContext*>(Context);
  if (Context && !TavoContext) throw EMekException(SIntfCastError);
  if (TavoContext && (FDataType == dtVariable || FDataType == dtMultiVariable)) {
    if (TBinding* Binding = TavoContext->FindBinding(FText)) return Binding->GetValue();
    // A name of question marks only is what a misread encoding leaves.
    if (FText.size() > 1 && FText.find_first_not_of(u'?') == String::npos)
      throw ETavoException(Format(SEncodingProblem, FText));
    throw ETavoException(Format(SUnknownVariable, FText));
  }
  return Value();
}

void TTavoStreamToken::SetValue(const ITavoValue& Value) {
  if (!Value) throw EMekException(SIntfCastError);
  const TTavoType Type = Value->GetDType();
  FDataType = int32_t(Type) & 0x7F;
  const TTavoValueRec& Payload = Value->GetValue();
  switch (Type) {
    case dtAtom:
    case dtString:
    case dtVariable:
    case dtMultiVariable:
    case dtSlot:
    case dtMultiSlot:
      FText = String(Value->GetText());
      break;
    case dtInteger:
    case dtFactId:
    case dtDescriptor:
      FNumber = Payload.VInteger;
      break;
    case dtFloat:
      FNumber = Payload.VExtended;
      break;
    case dtObject:
      FNumber = PointerToNumber(Payload.VObject);
      break;
    case dtExternalAddress:
      FNumber = PointerToNumber(Payload.VPointer);
      break;
    default:
      break;
  }
}

}  // namespace tavo
