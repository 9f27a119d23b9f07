#include "knowledge/TavoDefinedType.h"

#include <algorithm>
#include <cmath>

#include "core/TavoHelperFunctions.h"

namespace tavo {

namespace {

constexpr double InitialMaxRange = 2147483647.0;
constexpr double InitialMinRange = -2147483648.0;
constexpr double ConstraintEpsilon = 0.0001;
constexpr TTavoTypes FuzzyOnly{dtFuzzy};
constexpr TValueConstraints AllConstraints = TValueConstraints::Range(vcAtom, vcFloat);

// The enumerator's name without its two-letter prefix, as "Atom".
String KindName(TValueConstraint Kind) {
  static constexpr const char16_t* Names[] = {u"Atom", u"String", u"Integer", u"Float"};
  return Names[Kind];
}

String TypeNameWithoutPrefix(TTavoType Type) { return GetTavoTypeName(Type).substr(2); }

}  // namespace

TTavoDefinedType::TTavoDefinedType(IReasoner* Reasoner) : FReasoner(Reasoner) {
  if (Reasoner) TModuleConstruct::SetModule(Reasoner->GetCurrentModule());
}

TTavoDefinedType::~TTavoDefinedType() {
  if (FFuzzyType) FFuzzyType->SetParser(nullptr);
}

void TTavoDefinedType::Change() {
  if (FOnChange) FOnChange(this);
}

void TTavoDefinedType::SetUpdateState(bool Updating) {
  if (!Updating) Change();
}

void TTavoDefinedType::BeginUpdate() {
  if (FUpdateCount++ == 0) SetUpdateState(true);
}

void TTavoDefinedType::EndUpdate() {
  if (FUpdateCount > 0 && --FUpdateCount == 0) SetUpdateState(false);
}

// Setters.

void TTavoDefinedType::SetBaseTypes(TTavoTypes Value) {
  if (Value.Contains(dtFuzzy) && Value != FuzzyOnly) throw ETavoException(SCannotMixFuzzy);
  TTavoTypes Stored = Value * TavoSlotTypesWithFuzzy;
  bool Fuzzy = Stored == FuzzyOnly;
  if (Stored == FBaseTypes && Fuzzy == bool(FFuzzyType)) return;
  FBaseTypes = Stored;
  if (Fuzzy && !FFuzzyType) {
    IFuzzyVariable Variable = Make<TTavoFuzzyVariable>(FName);
    if (FRangeLimited) {
      Variable->SetMinimum(FMinRange);
      Variable->SetMaximum(FMaxRange);
    }
    Variable->SetUnits(FUnits);
    SetFuzzyType(Variable);
  } else if (!Fuzzy && FFuzzyType) {
    FFuzzyType->SetParser(nullptr);
    FFuzzyType.Reset();
  }
  Change();
}

void TTavoDefinedType::SetFuzzyType(const IFuzzyVariable& Value) {
  if (Value == FFuzzyType) return;
  if (FFuzzyType) FFuzzyType->SetParser(nullptr);
  FFuzzyType = Value;
  AttachParser();
  if (FFuzzyType) {
    SetBaseTypes(FuzzyOnly);
    FMaxRange = FFuzzyType->GetMaximum();
    FMinRange = FFuzzyType->GetMinimum();
    FUnits = FFuzzyType->GetUnits();
  }
  Change();
}

void TTavoDefinedType::AttachParser() {
  if (FFuzzyType) FFuzzyType->SetParser(dynamic_cast<IFuzzyParser*>(FReasoner));
}

void TTavoDefinedType::SetName(const String& Value) {
  if (Value == FName) return;
  CheckConstructName(Value);
  String OldName = FName;
  FName = Value;
  try {
    if (FReasoner) FReasoner->RenameDefinedType(OldName, Value);
  } catch (...) {
    FName = OldName;
    throw;
  }
  Change();
}

void TTavoDefinedType::SetMaxRange(double Value) {
  if (Value == FMaxRange) return;
  FMaxRange = Value;
  if (FMaxRange < FMinRange) FMinRange = Value;
  if (FFuzzyType) {
    FFuzzyType->SetMaximum(FMaxRange);
    FFuzzyType->SetMinimum(FMinRange);
  }
  Change();
}

void TTavoDefinedType::SetMinRange(double Value) {
  if (Value == FMinRange) return;
  FMinRange = Value;
  if (FMinRange > FMaxRange) FMaxRange = Value;
  if (FFuzzyType) {
    FFuzzyType->SetMinimum(FMinRange);
    FFuzzyType->SetMaximum(FMaxRange);
  }
  Change();
}

void TTavoDefinedType::SetMaxCardinality(int Value) {
  Value = std::max(Value, 0);
  if (Value == FMaxCardinality) return;
  FMaxCardinality = Value;
  if (FMaxCardinality < FMinCardinality) FMinCardinality = Value;
  Change();
}

void TTavoDefinedType::SetMinCardinality(int Value) {
  Value = std::max(Value, 0);
  if (Value == FMinCardinality) return;
  FMinCardinality = Value;
  if (FMinCardinality > FMaxCardinality) FMaxCardinality = Value;
  Change();
}

void TTavoDefinedType::SetReasoner(IReasoner* Value) {
  if (Value == FReasoner) return;
  FReasoner = Value;
  if (Value) TModuleConstruct::SetModule(Value->GetCurrentModule());
  AttachParser();
  Change();
}

void TTavoDefinedType::SetRangeLimited(bool Value) {
  if (Value == FRangeLimited) return;
  FRangeLimited = Value;
  Change();
}

void TTavoDefinedType::SetCardinalityLimited(bool Value) {
  if (Value == FCardinalityLimited) return;
  FCardinalityLimited = Value;
  Change();
}

void TTavoDefinedType::SetComment(const String& Value) {
  if (Value == FComment) return;
  FComment = Value;
  Change();
}

void TTavoDefinedType::SetUnits(const String& Value) {
  if (Value == FUnits) return;
  FUnits = Value;
  Change();
}

void TTavoDefinedType::SetImplicit(bool Value) {
  if (Value == FImplicit) return;
  FImplicit = Value;
  Change();
}

void TTavoDefinedType::SetAncestor(const ITavoDefinedType& Value) {
  if (Value == FAncestor) return;
  for (const TTavoDefinedType* Type = Value.Get(); Type; Type = Type->FAncestor.Get())
    if (Type == this) throw ETavoException(Format(STypeInheritanceLoop, FName));
  FAncestor = Value;
  if (Value) FImplicit = false;
  Change();
}

// Constraints.

void TTavoDefinedType::SetConstraints(TValueConstraints Value) {
  Value = Value * AllConstraints;
  if (Value == FConstraints) return;
  for (TValueConstraint Kind : {vcAtom, vcString, vcInteger, vcFloat}) {
    bool Wanted = Value.Contains(Kind);
    if (Wanted == FConstraints.Contains(Kind)) continue;
    if (!Wanted) {
      ClearConstraint(Kind);
      continue;
    }
    switch (Kind) {
      case vcAtom:
        FConstraintAtoms = std::make_unique<TTextList>();
        break;
      case vcString:
        FConstraintStrings = std::make_unique<TTextList>();
        break;
      case vcInteger:
        FConstraintIntegers = std::make_unique<std::vector<int32_t>>();
        break;
      case vcFloat:
        FConstraintFloats = Make<TValueVector>();
        break;
    }
    FConstraints.Include(Kind);
  }
  Change();
}

void TTavoDefinedType::ClearConstraint(TValueConstraint Kind) {
  switch (Kind) {
    case vcAtom:
      FConstraintAtoms.reset();
      break;
    case vcString:
      FConstraintStrings.reset();
      break;
    case vcInteger:
      FConstraintIntegers.reset();
      break;
    case vcFloat:
      FConstraintFloats.Reset();
      break;
  }
  FConstraints.Exclude(Kind);
}

void TTavoDefinedType::ClearConstraints(TValueConstraints Kinds) {
  Kinds = Kinds * FConstraints;
  if (Kinds.Empty()) return;
  Kinds.ForEach([this](TValueConstraint Kind) { ClearConstraint(Kind); });
  Change();
}

void TTavoDefinedType::NoSuchConstraint(const char16_t* Kind) const {
  throw ETavoException(Format(SNoSuchConstraint, FName, Kind));
}

int TTavoDefinedType::GetConstraintAtomsCount() const {
  return FConstraintAtoms ? FConstraintAtoms->Count() : 0;
}
int TTavoDefinedType::GetConstraintStringsCount() const {
  return FConstraintStrings ? FConstraintStrings->Count() : 0;
}
int TTavoDefinedType::GetConstraintIntegersCount() const {
  return FConstraintIntegers ? int(FConstraintIntegers->size()) : 0;
}
int TTavoDefinedType::GetConstraintFloatsCount() const {
  return FConstraintFloats ? FConstraintFloats->GetValueCount() : 0;
}

String TTavoDefinedType::GetConstraintAtom(int Index) const {
  if (!FConstraintAtoms) NoSuchConstraint(u"Atom");
  return FConstraintAtoms->Get(Index);
}

String TTavoDefinedType::GetConstraintString(int Index) const {
  if (!FConstraintStrings) NoSuchConstraint(u"String");
  return FConstraintStrings->Get(Index);
}

int32_t TTavoDefinedType::GetConstraintInteger(int Index) const {
  if (!FConstraintIntegers) NoSuchConstraint(u"Integer");
  if (Index < 0 || Index >= int(FConstraintIntegers->size()))
    throw EMekException(Format(SListIndexError, Index));
  return (*FConstraintIntegers)[size_t(Index)];
}

ITavoValue TTavoDefinedType::GetConstraintFloat(int Index) const {
  if (!FConstraintFloats) NoSuchConstraint(u"Float");
  return FConstraintFloats->Get(Index);
}

TValueConstraint TTavoDefinedType::GetValueConstraint(const ITavoValue& Value) const {
  TValueConstraint Kind;
  switch (Value->GetDType()) {
    case dtAtom:
      Kind = vcAtom;
      break;
    case dtString:
      Kind = vcString;
      break;
    case dtInteger:
      Kind = vcInteger;
      break;
    case dtFloat:
      Kind = vcFloat;
      break;
    default:
      throw ETavoException(
          Format(SInvalidConstraint, FName, TypeNameWithoutPrefix(Value->GetDType())));
  }
  if (FConstraints.Contains(Kind)) return Kind;
  // A number may find its list under the other numeric kind.
  if (Kind == vcInteger && FConstraints.Contains(vcFloat)) return vcFloat;
  if (Kind == vcFloat && FConstraints.Contains(vcInteger) &&
      double(TruncToInt32(Value->GetValue().VExtended)) == Value->GetValue().VExtended)
    return vcInteger;
  return Kind;
}

bool TTavoDefinedType::IsConstraint(const ITavoValue& Value, TValueConstraint& Constraint) const {
  TTavoType Type = Value->GetDType();
  if (Type != dtAtom && Type != dtString && Type != dtInteger && Type != dtFloat) return false;
  Constraint = GetValueConstraint(Value);
  if (!FConstraints.Contains(Constraint)) return false;
  switch (Constraint) {
    case vcAtom:
      return FConstraintAtoms->IndexOf(Value->GetAsAtom()) >= 0;
    case vcString:
      return FConstraintStrings->IndexOf(Value->GetAsString()) >= 0;
    case vcInteger: {
      int32_t Number = Value->GetAsInteger();
      return std::find(FConstraintIntegers->begin(), FConstraintIntegers->end(), Number) !=
             FConstraintIntegers->end();
    }
    case vcFloat:
      // By the very object, as it stands: an equal fresh float is not found.
      return FConstraintFloats->IndexOf(Value) >= 0;
  }
  return false;
}

void TTavoDefinedType::AddConstraint(const ITavoValue& Value) {
  TValueConstraint Kind = GetValueConstraint(Value);
  if (!FConstraints.Contains(Kind))
    throw ETavoException(Format(SInvalidConstraint, FName, KindName(Kind)));
  bool Added = false;
  switch (Kind) {
    case vcAtom:
    case vcString: {
      TTextList& List = Kind == vcAtom ? *FConstraintAtoms : *FConstraintStrings;
      String Text = Value->GetAsString();
      if (List.IndexOf(Text) < 0) {
        List.Add(Text);
        Added = true;
      }
      break;
    }
    case vcInteger: {
      int32_t Number = Value->GetAsInteger();
      if (std::find(FConstraintIntegers->begin(), FConstraintIntegers->end(), Number) ==
          FConstraintIntegers->end()) {
        FConstraintIntegers->push_back(Number);
        Added = true;
      }
      break;
    }
    case vcFloat: {
      bool Present = false;
      for (const ITavoValue& Member : *FConstraintFloats) Present = Present || Member->Equals(Value);
      if (!Present) {
        FConstraintFloats->Add(Value);
        Added = true;
      }
      break;
    }
  }
  if (Added) Change();
}

void TTavoDefinedType::RemoveConstraint(const ITavoValue& Value) {
  TTavoType Type = Value->GetDType();
  if (Type != dtAtom && Type != dtString && Type != dtInteger && Type != dtFloat) return;
  TValueConstraint Kind = GetValueConstraint(Value);
  if (!FConstraints.Contains(Kind)) return;
  bool Removed = false;
  switch (Kind) {
    case vcAtom:
    case vcString: {
      TTextList& List = Kind == vcAtom ? *FConstraintAtoms : *FConstraintStrings;
      int Index = List.IndexOf(Value->GetAsAtom());
      if (Index >= 0) {
        List.Delete(Index);
        Removed = true;
      }
      break;
    }
    case vcInteger: {
      auto It = std::find(FConstraintIntegers->begin(), FConstraintIntegers->end(),
                          Value->GetAsInteger());
      if (It != FConstraintIntegers->end()) {
        FConstraintIntegers->erase(It);
        Removed = true;
      }
      break;
    }
    case vcFloat:
      Removed = FConstraintFloats->Remove(Value) >= 0;
      break;
  }
  if (Removed) Change();
}

void TTavoDefinedType::DeleteConstraint(int Index, TValueConstraint Constraint) {
  if (!FConstraints.Contains(Constraint))
    throw ETavoException(Format(SNoSuchConstraint, FName, KindName(Constraint)));
  switch (Constraint) {
    case vcAtom:
      FConstraintAtoms->Delete(Index);
      break;
    case vcString:
      FConstraintStrings->Delete(Index);
      break;
    case vcInteger:
      if (Index < 0 || Index >= int(FConstraintIntegers->size()))
        throw EMekException(Format(SListIndexError, Index));
      FConstraintIntegers->erase(FConstraintIntegers->begin() + Index);
      break;
    case vcFloat:
      FConstraintFloats->Delete(Index);
      break;
  }
  Change();
}

// Validation.

bool TTavoDefinedType::IsValid(const ITavoValue& Value) const {
  TTavoType Type = Value->GetDType();
  if (Type == dtList) {
    IValueVector List = Value->GetAsList();
    int Count = List->GetValueCount();
    if (FCardinalityLimited && (Count < FMinCardinality || Count > FMaxCardinality)) return false;
    for (const ITavoValue& Member : *List)
      if (!IsValid(Member)) return false;
    return true;
  }
  if (FBaseTypes.Contains(dtFuzzy)) {
    // A set of this type's variable, or a form that can still become one.
    if (Type == dtFuzzy) {
      const IFuzzySet& Set = Value->GetAsFuzzy();
      return Set && FFuzzyType && Set->GetVariable() == FFuzzyType.Get();
    }
    static constexpr TTavoTypes Convertible{dtAtom,  dtString,     dtInteger,      dtVariable,
                                            dtFloat, dtFunCall,    dtSingletons,   dtMultiVariable};
    return Convertible.Contains(Type);
  }
  if (!TavoAlwaysValidTypes.Contains(Type) && !FBaseTypes.Contains(Type)) return false;
  return NotAllowedReason(Value).empty();
}

// The allowed-value and range tests of a value whose tag is acceptable.
String TTavoDefinedType::NotAllowedReason(const ITavoValue& Value) const {
  TTavoType Type = Value->GetDType();
  if (Type == dtAtom || Type == dtString || Type == dtInteger || Type == dtFloat) {
    // A number meets the allowed numbers of either kind: a float with a
    // fraction is refused by a list of integers alone, though it has no
    // list of its own kind to be looked up in.
    static constexpr TValueConstraints Numbers{vcInteger, vcFloat};
    bool Tested = FConstraints.Contains(GetValueConstraint(Value)) ||
                  (TavoNumericTypes.Contains(Type) && !(FConstraints * Numbers).Empty());
    TValueConstraint Kind;
    if (Tested && !IsConstraint(Value, Kind)) return SNotAllowedValue;
  }
  if (FRangeLimited && TavoNumericTypes.Contains(Type)) {
    double Number = Value->GetAsNumeric();
    if (Number < FMinRange || Number > FMaxRange)
      return Format(SOutOfRangeError, FMinRange, FMaxRange);
  }
  return String();
}

String TTavoDefinedType::GetInvalidValueString(const ITavoValue& Value) const {
  String Reason;
  TTavoType Type = Value->GetDType();
  if (Type == dtList) {
    IValueVector List = Value->GetAsList();
    int Count = List->GetValueCount();
    if (FCardinalityLimited && (Count < FMinCardinality || Count > FMaxCardinality)) {
      Reason = Format(SListCardinalityError, FMinCardinality, FMaxCardinality);
    } else {
      for (const ITavoValue& Member : *List) {
        Reason = GetInvalidValueString(Member);
        if (!Reason.empty()) break;
      }
    }
  } else if (FBaseTypes.Contains(dtFuzzy)) {
    Reason = SInvalidFuzzyValue;
  } else if (FBaseTypes.Contains(Type) || Type == dtVariable || Type == dtFunCall ||
             Type == dtMultiVariable) {
    Reason = NotAllowedReason(Value);
  } else {
    Reason = Format(SNotCorrectType, UpperCase(SetToString(FBaseTypes)),
                    Value->GetToString(), GetTavoTypeName(Type));
  }
  if (Reason.empty()) return Reason;
  return Format(SInvalidValue, Value->GetToString(), Reason);
}

// Defaults.

ITavoValue TTavoDefinedType::CreateValidDefault(bool IsMulti) const {
  if (!IsMulti) return CreateSingleDefault();
  if (FCardinalityLimited && FMinCardinality > 0) {
    IValueVector List = Make<TValueVector>();
    List->Reserve(FMinCardinality);
    for (int I = 0; I < FMinCardinality; ++I) List->Add(CreateSingleDefault());
    return Make<TTavoValue>(List);
  }
  return FCNilList->CloneValue();
}

ITavoValue TTavoDefinedType::CreateSingleDefault() const {
  ITavoValue Result = Make<TTavoValue>();
  // The range's own default: 0 for the whole initial range, else the bound
  // that was moved, the upper one first.
  bool WholeRange = FMinRange == InitialMinRange && FMaxRange == InitialMaxRange;
  double RangeDefault = !FRangeLimited || WholeRange       ? 0.0
                        : FMinRange == InitialMinRange ? FMaxRange
                                                       : FMinRange;
  if (FBaseTypes.Contains(dtAtom)) {
    Result->SetAsAtom(GetConstraintAtomsCount() > 0 ? FConstraintAtoms->Get(0) : String());
  } else if (FBaseTypes.Contains(dtString)) {
    Result->SetAsString(GetConstraintStringsCount() > 0 ? FConstraintStrings->Get(0) : String());
  } else if (FBaseTypes.Contains(dtInteger)) {
    Result->SetAsInteger(GetConstraintIntegersCount() > 0 ? (*FConstraintIntegers)[0]
                                                          : TruncToInt32(RangeDefault));
  } else if (FBaseTypes.Contains(dtFloat)) {
    if (GetConstraintFloatsCount() > 0) return FConstraintFloats->Get(0)->CloneValue();
    Result->SetAsFloat(RangeDefault);
  } else if (FBaseTypes.Contains(dtObject)) {
    Result->SetAsObject(nullptr);
  } else if (FBaseTypes.Contains(dtExternalAddress)) {
    Result->SetAsExternalAddress(nullptr);
  } else if (FBaseTypes.Contains(dtFuzzy)) {
    if (!FFuzzyType) return FCNil;
    TIFuzzySet* Empty = FFuzzyType->FindFuzzySet(SEmptyFuzzy);
    Result->SetAsFuzzy(Empty ? IFuzzySet(Empty) : FFuzzyType->NewFuzzySet(SEmptyFuzzy));
  } else if (FBaseTypes.Contains(dtFactId)) {
    Result->SetAsFactId(0);
  } else if (FBaseTypes.Contains(dtFact)) {
    Result->SetInterface(dtFact, nullptr);
  } else if (FBaseTypes.Contains(dtDescriptor)) {
    Result->SetAsDescriptor(0);
  } else if (FBaseTypes.Contains(dtClass)) {
    Result->SetAsClass(nullptr);
  }
  return Result;
}

// Equality and copying.

bool TTavoDefinedType::ConstraintsEqual(const TTavoDefinedType& Other) const {
  if (FConstraints != Other.FConstraints) return false;
  auto SameTexts = [](const TTextList* A, const TTextList* B) {
    if (A->Count() != B->Count()) return false;
    for (int I = 0; I < A->Count(); ++I)
      if (A->Get(I) != B->Get(I)) return false;
    return true;
  };
  if (FConstraints.Contains(vcAtom) && !SameTexts(FConstraintAtoms.get(), Other.FConstraintAtoms.get()))
    return false;
  if (FConstraints.Contains(vcString) &&
      !SameTexts(FConstraintStrings.get(), Other.FConstraintStrings.get()))
    return false;
  if (FConstraints.Contains(vcInteger) && *FConstraintIntegers != *Other.FConstraintIntegers)
    return false;
  if (FConstraints.Contains(vcFloat)) {
    int Count = FConstraintFloats->GetValueCount();
    if (Count != Other.FConstraintFloats->GetValueCount()) return false;
    for (int I = 0; I < Count; ++I)
      if (!FloatEquals(FConstraintFloats->Get(I)->GetAsFloat(),
                       Other.FConstraintFloats->Get(I)->GetAsFloat(), ConstraintEpsilon))
        return false;
  }
  return true;
}

bool TTavoDefinedType::Equals(const TCloneableObject* Other) const {
  if (!Other) return false;
  auto* Type = dynamic_cast<const TTavoDefinedType*>(Other);
  if (!Type) throw EMekException(SIntfCastError);
  if (Type == this) return true;
  if (Type->FName != FName || Type->FBaseTypes != FBaseTypes) return false;
  if (FFuzzyType && Type->FFuzzyType) return FFuzzyType->Equals(Type->FFuzzyType.Get());
  if (FFuzzyType || Type->FFuzzyType) return false;
  return FloatEquals(FMaxRange, Type->FMaxRange, ConstraintEpsilon) &&
         FloatEquals(FMinRange, Type->FMinRange, ConstraintEpsilon) &&
         FMaxCardinality == Type->FMaxCardinality && FMinCardinality == Type->FMinCardinality &&
         FRangeLimited == Type->FRangeLimited && FCardinalityLimited == Type->FCardinalityLimited &&
         ConstraintsEqual(*Type);
}

void TTavoDefinedType::Assign(const TPersistent* Source) {
  auto* Type = dynamic_cast<const TTavoDefinedType*>(Source);
  if (!Type) {
    TModuleConstruct::Assign(Source);
    return;
  }
  if (Type == this) return;
  BeginUpdate();
  try {
    SetAncestor(Type->FReasoner == FReasoner ? Type->FAncestor : ITavoDefinedType());
    FBaseTypes = Type->FBaseTypes;
    FName = Type->FName;
    FComment = Type->FComment;
    FRangeLimited = Type->FRangeLimited;
    FMaxRange = Type->FMaxRange;
    FMinRange = Type->FMinRange;
    FCardinalityLimited = Type->FCardinalityLimited;
    FMaxCardinality = Type->FMaxCardinality;
    FMinCardinality = Type->FMinCardinality;
    FImplicit = Type->FImplicit;
    if (Type->FFuzzyType) SetFuzzyType(RefCast<TIFuzzyVariable>(Type->FFuzzyType->Clone()));
    SetTag(Type->GetTag());
    FUnits = Type->FUnits;
    ClearConstraints();
    SetConstraints(Type->FConstraints);
    if (Type->FConstraintAtoms) FConstraintAtoms->Assign(Type->FConstraintAtoms.get());
    if (Type->FConstraintStrings) FConstraintStrings->Assign(Type->FConstraintStrings.get());
    if (Type->FConstraintIntegers) *FConstraintIntegers = *Type->FConstraintIntegers;
    if (Type->FConstraintFloats) FConstraintFloats->Assign(ICloneableObject(Type->FConstraintFloats));
  } catch (...) {
    EndUpdate();
    throw;
  }
  EndUpdate();
}

void TTavoDefinedType::AssignTo(TPersistent* Dest) const {
  if (auto* Strings = dynamic_cast<TStrings*>(Dest)) {
    Strings->Add(ToString());
    return;
  }
  TModuleConstruct::AssignTo(Dest);
}

ICloneableObject TTavoDefinedType::Clone() const { return CloneType(); }

ITavoDefinedType TTavoDefinedType::CloneType() const {
  const TClass& Class = ClassType();
  std::unique_ptr<TObject> Instance(Class.Create ? Class.Create() : nullptr);
  auto* Type = dynamic_cast<TTavoDefinedType*>(Instance.get());
  if (!Type) throw EMekException(Format(u"Cannot create an instance of class %s", String(Class.Name)));
  Instance.release();
  ITavoDefinedType Result(Type);
  Result->AfterConstruction();
  Result->FReasoner = FReasoner;
  Result->Assign(this);
  return Result;
}

String TTavoDefinedType::ToString() const {
  if (FReasoner)
    if (String Text = FReasoner->PrettyPrint(ITavoDefinedType(const_cast<TTavoDefinedType*>(this))); !Text.empty())
      return Text;
  String Result = u"(deftype " + FName;
  if (!FComment.empty()) Result += u" \"" + FComment + u"\"";
  Result += u"\r\n" + GetAllowedString(*this) + u")";
  return Result;
}

// Text of the allowed values.

String ConstraintToString(const TTavoDefinedType& Type, TValueConstraint Kind) {
  String Result;
  switch (Kind) {
    case vcAtom:
      for (int I = 0; I < Type.GetConstraintAtomsCount(); ++I)
        Result += Type.GetConstraintAtom(I) + u' ';
      break;
    case vcString:
      for (int I = 0; I < Type.GetConstraintStringsCount(); ++I)
        Result += u'"' + Type.GetConstraintString(I) + u"\" ";
      break;
    case vcInteger:
      for (int I = 0; I < Type.GetConstraintIntegersCount(); ++I)
        Result += IntToStr(Type.GetConstraintInteger(I)) + u' ';
      break;
    case vcFloat:
      for (int I = 0; I < Type.GetConstraintFloatsCount(); ++I)
        Result += Format(u"%.4f", Type.GetConstraintFloat(I)->GetAsFloat()) + u' ';
      break;
  }
  return Result;
}

String GetAllowedString(const TTavoDefinedType& Type) {
  TValueConstraints Kinds = Type.GetConstraints();
  auto Line = [](const String& Text) { return IndentString + Text + u"\r\n"; };
  if (Kinds == AllConstraints)
    return Line(u"(allowed-values " + ConstraintToString(Type, vcAtom) +
                ConstraintToString(Type, vcString) + ConstraintToString(Type, vcInteger) +
                ConstraintToString(Type, vcFloat) + u")");
  String Result;
  bool Integers = Kinds.Contains(vcInteger), Floats = Kinds.Contains(vcFloat);
  if (Integers && Floats)
    Result += Line(u"(allowed-numbers " + ConstraintToString(Type, vcInteger) +
                   ConstraintToString(Type, vcFloat) + u") ");
  else if (Integers)
    Result += Line(u"(allowed-integers " + ConstraintToString(Type, vcInteger) + u") ");
  else if (Floats)
    Result += Line(u"(allowed-floats " + ConstraintToString(Type, vcFloat) + u") ");
  bool Atoms = Kinds.Contains(vcAtom), Strings = Kinds.Contains(vcString);
  if (Atoms && Strings)
    Result += Line(u"(allowed-lexemes " + ConstraintToString(Type, vcAtom) +
                   ConstraintToString(Type, vcString) + u")");
  else if (Atoms)
    Result += Line(u"(allowed-symbols " + ConstraintToString(Type, vcAtom) + u")");
  else if (Strings)
    Result += Line(u"(allowed-strings " + ConstraintToString(Type, vcString) + u")");
  return Result;
}

}  // namespace tavo
