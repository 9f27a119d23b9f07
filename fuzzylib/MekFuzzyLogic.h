// The fuzzy-set library: fuzzy variables with their universe of discourse.
#pragma once

#include "common/MekGenerics.h"
#include "fuzzylib/FuzzyConsts.h"

namespace tavo {

// Turns texts into fuzzy sets and variables for the library; the engine
// implements it.
class IFuzzyParser {
 public:
  virtual ~IFuzzyParser() = default;
};

// A fuzzy variable: a name, a universe of discourse from Minimum to Maximum
// with a unit text, and the threshold under which memberships count as no
// match. A new variable spans 0 to 100.
class TIFuzzyVariable : public TCloneableObject {
  TAVO_CLASS(TIFuzzyVariable, TCloneableObject)
 public:
  explicit TIFuzzyVariable(String Name = String()) : FName(std::move(Name)) {}

  const String& GetName() const { return FName; }
  void SetName(const String& Value) { FName = Value; }
  double GetMinimum() const { return FMinimum; }
  void SetMinimum(double Value) { FMinimum = Value; }
  double GetMaximum() const { return FMaximum; }
  void SetMaximum(double Value) { FMaximum = Value; }
  const String& GetUnits() const { return FUnits; }
  void SetUnits(const String& Value) { FUnits = Value; }
  double GetFuzzyEqualsThreshold() const { return FFuzzyEqualsThreshold; }
  void SetFuzzyEqualsThreshold(double Value) { FFuzzyEqualsThreshold = Value; }
  IFuzzyParser* GetParser() const { return FParser; }
  virtual void SetParser(IFuzzyParser* Value) { FParser = Value; }

  using TCloneableObject::Assign;
  void Assign(const TPersistent* Source) override;
  // Same name, universe (within 0.0001) and units.
  bool Equals(const TCloneableObject* Other) const override;
  String ToString() const override { return FName; }

 private:
  String FName;
  double FMinimum = 0;
  double FMaximum = 100;
  String FUnits;
  double FFuzzyEqualsThreshold = 0;
  IFuzzyParser* FParser = nullptr;
};

}  // namespace tavo
