// Defined types: named constraints on values (the deftype construct).
#pragma once

#include <memory>
#include <vector>

#include "common/MekStringList.h"
#include "core/TavoFuzzy.h"
#include "core/TavoVectors.h"
#include "knowledge/TavoModuleConstruct.h"

namespace tavo {

class TTavoDefinedType;
using TTavoDefinedTypeEvent = std::function<void(TObject* Sender, const ITavoDefinedType& Type)>;

class TTavoDefinedType : public TModuleConstruct {
  TAVO_CLASS(TTavoDefinedType, TModuleConstruct)
 public:
  // With a reasoner, the type's module is the reasoner's current module.
  explicit TTavoDefinedType(IReasoner* Reasoner = nullptr);
  ~TTavoDefinedType() override;

  // Every setter does nothing for an unchanged value, else stores and
  // raises OnChange.
  TTavoTypes GetBaseTypes() const { return FBaseTypes; }
  // Fuzzy excludes every other type. Exactly dtFuzzy makes the type own a
  // fuzzy variable named as the type; anything else drops it.
  virtual void SetBaseTypes(TTavoTypes Value);
  const String& GetName() const { return FName; }
  virtual void SetName(const String& Value);
  double GetMaxRange() const { return FMaxRange; }
  double GetMinRange() const { return FMinRange; }
  // The range and the cardinality stay ordered: moving one bound past the
  // other drags the other along.
  virtual void SetMaxRange(double Value);
  virtual void SetMinRange(double Value);
  int GetMaxCardinality() const { return FMaxCardinality; }
  int GetMinCardinality() const { return FMinCardinality; }
  virtual void SetMaxCardinality(int Value);
  virtual void SetMinCardinality(int Value);
  const IFuzzyVariable& GetFuzzyType() const { return FFuzzyType; }
  virtual void SetFuzzyType(const IFuzzyVariable& Value);
  TValueConstraints GetConstraints() const { return FConstraints; }
  // A kind that is new gets an empty list; a kind that went away loses its list.
  virtual void SetConstraints(TValueConstraints Value);
  IReasoner* GetReasoner() const { return FReasoner; }
  virtual void SetReasoner(IReasoner* Value);
  bool GetRangeLimited() const { return FRangeLimited; }
  virtual void SetRangeLimited(bool Value);
  bool GetCardinalityLimited() const { return FCardinalityLimited; }
  virtual void SetCardinalityLimited(bool Value);
  const String& GetComment() const { return FComment; }
  virtual void SetComment(const String& Value);
  const String& GetUnits() const { return FUnits; }
  virtual void SetUnits(const String& Value);
  bool GetImplicit() const { return FImplicit; }
  virtual void SetImplicit(bool Value);
  const ITavoDefinedType& GetAncestor() const { return FAncestor; }
  // Refuses a link that would make the type its own ancestor.
  virtual void SetAncestor(const ITavoDefinedType& Value);

  TNotifyEvent GetOnChange() const { return FOnChange; }
  void SetOnChange(TNotifyEvent Value) { FOnChange = std::move(Value); }
  // Brackets several changes; the closing EndUpdate raises OnChange once
  // more. Single setters raise it inside a bracket too.
  void BeginUpdate();
  void EndUpdate();

  // Allowed values. Atoms and strings compare without regard to case,
  // integers exactly, floats by the very value object that was added.
  int GetConstraintAtomsCount() const;
  int GetConstraintStringsCount() const;
  int GetConstraintIntegersCount() const;
  int GetConstraintFloatsCount() const;
  String GetConstraintAtom(int Index) const;
  String GetConstraintString(int Index) const;
  int32_t GetConstraintInteger(int Index) const;
  ITavoValue GetConstraintFloat(int Index) const;
  void AddConstraint(const ITavoValue& Value);
  void RemoveConstraint(const ITavoValue& Value);
  void DeleteConstraint(int Index, TValueConstraint Constraint);
  void ClearConstraints(TValueConstraints Kinds);
  void ClearConstraints() { ClearConstraints(TValueConstraints::Range(vcAtom, vcFloat)); }
  // The kind of allowed-value list that Value is looked up in.
  TValueConstraint GetValueConstraint(const ITavoValue& Value) const;
  bool IsConstraint(const ITavoValue& Value, TValueConstraint& Constraint) const;

  bool IsValid(const ITavoValue& Value) const;
  // Why Value is not valid, or empty text; dtNone is refused here although
  // IsValid accepts it.
  String GetInvalidValueString(const ITavoValue& Value) const;
  // The default of a slot of this type that declares none.
  virtual ITavoValue CreateValidDefault(bool IsMulti) const;

  bool Equals(const TCloneableObject* Other) const override;
  using TModuleConstruct::Assign;
  void Assign(const TPersistent* Source) override;
  // Into a string list: the type's text as one more line.
  void AssignTo(TPersistent* Dest) const override;
  ICloneableObject Clone() const override;
  ITavoDefinedType CloneType() const;
  // The type's deftype text.
  String ToString() const override;
  String GetValueToString(const ITavoValue& Value) const { return Value->GetToString(); }

 protected:
  virtual void SetUpdateState(bool Updating);
  void Change();

 private:
  using TTextList = TStringList<int>;

  bool ConstraintsEqual(const TTavoDefinedType& Other) const;
  void ClearConstraint(TValueConstraint Kind);
  [[noreturn]] void NoSuchConstraint(const char16_t* Kind) const;
  String NotAllowedReason(const ITavoValue& Value) const;
  ITavoValue CreateSingleDefault() const;
  void AttachParser();

  TTavoTypes FBaseTypes = TavoSlotTypes;
  String FName = SImplicitDefinedType;
  double FMaxRange = 2147483647.0;
  double FMinRange = -2147483648.0;
  int FMaxCardinality = 2147483647;
  int FMinCardinality = 0;
  IFuzzyVariable FFuzzyType;
  TValueConstraints FConstraints;
  std::unique_ptr<TTextList> FConstraintAtoms;
  std::unique_ptr<std::vector<int32_t>> FConstraintIntegers;
  std::unique_ptr<TTextList> FConstraintStrings;
  IValueVector FConstraintFloats;
  IReasoner* FReasoner = nullptr;
  bool FRangeLimited = false;
  bool FCardinalityLimited = false;
  String FComment;
  String FUnits;
  bool FImplicit = false;
  ITavoDefinedType FAncestor;
  TNotifyEvent FOnChange;
  int FUpdateCount = 0;
};

// The members of one kind of allowed values, each followed by a blank:
// atoms plain, strings quoted, integers decimal, floats with four decimals.
String ConstraintToString(const TTavoDefinedType& Type, TValueConstraint Kind);
// The allowed-value clauses of a type, one indented line per group.
String GetAllowedString(const TTavoDefinedType& Type);

}  // namespace tavo
