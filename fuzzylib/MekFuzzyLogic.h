// The fuzzy-set library: fuzzy sets with their hedges, set operations,
// shapes and defuzzification, and fuzzy variables with their universe of
// discourse and named terms. It knows nothing of the engine; the engine
// reaches it through the sets' and variables' virtual operations and
// hands it an IFuzzyParser for texts.
//
// A set is a polyline: points (x, y) sorted by x, y the membership from 0
// to 1. Between two points the membership is interpolated linearly; left of
// the first point it is the first point's and right of the last the last
// one's, so that a shoulder such as (0 1) (10 0) goes on being true beyond
// its ends. Several points may share an x, which makes a vertical step; at
// that x itself the membership is the largest of theirs.
#pragma once

#include <array>
#include <initializer_list>
#include <vector>

#include "common/MekGenerics.h"
#include "common/MekInterfaceList.h"
#include "fuzzylib/FuzzyConsts.h"

namespace tavo {

class TFuzzySet;
class TIFuzzySet;
class TIFuzzyVariable;
using IFuzzySet = TRef<TIFuzzySet>;
using IFuzzyVariable = TRef<TIFuzzyVariable>;

// What the library needs of the engine to read a text. The engine
// implements it; sets and variables hold it by a plain pointer.
class IFuzzyParser {
 public:
  // The set that Text, an expression over Variable's terms, stands for.
  // Raises when the text is no such expression.
  virtual IFuzzySet ParseFuzzyExpression(TIFuzzyVariable& Variable, const String& Text) = 0;

 protected:
  ~IFuzzyParser() = default;
};

struct TFuzzyPoint {
  TFzyFloat X;
  TFzyFloat Y;
};

// What the operators of TFuzzySet::Iterate read and keep: the threshold
// that FuzzyOperatorMinThreshold must exceed and the largest pointwise
// minimum met so far.
struct TFuzzyIterateState {
  TFzyFloat Threshold = 0;
  TFzyFloat Degree = 0;
};
// Called by Iterate with the two memberships at each abscissa of the walk;
// answering true ends the walk.
using TFuzzyIterateOperator = bool (*)(TFzyFloat Y, TFzyFloat OtherY, TFuzzyIterateState& State);

// Keeps the largest minimum; true, which ends the walk, once it is above
// the threshold.
bool FuzzyOperatorMinThreshold(TFzyFloat Y, TFzyFloat OtherY, TFuzzyIterateState& State);
// Keeps the largest minimum and walks on: the degree to which two sets
// meet.
bool FuzzyOperatorMaxOfMin(TFzyFloat Y, TFzyFloat OtherY, TFuzzyIterateState& State);

// A named fuzzy set and its mathematics.
class TFuzzySet : public TCloneableObject {
  TAVO_CLASS(TFuzzySet, TCloneableObject)
 public:
  TFuzzySet() = default;
  explicit TFuzzySet(String Name) : FName(std::move(Name)) {}

  const String& GetName() const { return FName; }
  virtual void SetName(const String& Value) { FName = Value; }

  // The points, sorted by x; points of equal x keep the order they came
  // in. A point's y must lie in [0, 1] and both must be finite.
  int GetCount() const { return int(FPoints.size()); }
  TFzyFloat GetX(int Index) const { return FPoints[CheckIndex(Index)].X; }
  TFzyFloat GetY(int Index) const { return FPoints[CheckIndex(Index)].Y; }
  const std::vector<TFuzzyPoint>& GetPoints() const { return FPoints; }
  // Adds a point behind those of equal or smaller x.
  void AddPoint(TFzyFloat X, TFzyFloat Y);
  // SetX moves the point to its place among the others.
  void SetX(int Index, TFzyFloat X);
  void SetY(int Index, TFzyFloat Y);
  void ClearPoints();
  // Brackets a run of point changes, which then count as one: the set
  // forgets its shape and its last defuzzification when the bracket closes.
  void BeginUpdate() { ++FUpdateCount; }
  void EndUpdate();
  bool IsUpdating() const { return FUpdateCount > 0; }

  // The shape maker that made the points, and its arguments in the maker's
  // order without the steps: Triangle (Left, Center, Right); SCurve (Alpha,
  // Gamma, Beta); PI (Left, Right, Center) or (Width, Center); Beta (Width,
  // Center, Inflection) or with Weight behind. Any later change of the
  // points makes the set fstPoints with no arguments.
  TFuzzySetType GetSetType() const { return FSetType; }
  int GetShapeArgumentCount() const { return FShapeArgumentCount; }
  TFzyFloat GetShapeArgument(int Index) const;

  // Membership at X; 0 for a set without points.
  TFzyFloat DegreeOfMembership(TFzyFloat X) const;
  // The height of the set, its largest membership: 1 for a normal set, the
  // strength of a set cut by a weak rule. 0 for a set without points.
  TFzyFloat GetCompatibilityIndex() const;
  // The area under the points, from the first to the last.
  TFzyFloat GetArea() const;
  // Same points, coordinates within Epsilon.
  bool SamePoints(const TFuzzySet& Other, TFzyFloat Epsilon) const;

  // Hedges in place (see FuzzyHedgeTable).
  virtual void ApplyHedge(TFuzzyHedge Hedge);
  virtual void Hedge(TBaseFuzzyHedge Hedge, TFzyFloat Value);

  // Combines Other into this set point by point (see TFuzzyOperation). The
  // result has a point at every x where either set has one, and where the
  // two cross (for zadeh) or their sum crosses 1 (for bounded-sum), so
  // that those operations are exact; the others, being curved between
  // points, are taken as straight lines there. Points that add nothing to
  // the polyline are left out.
  virtual void Intersection(const TFuzzySet& Other, TFuzzyOperation Operation = foZadeh);
  virtual void Union(const TFuzzySet& Other, TFuzzyOperation Operation = foZadeh);

  // Walks both sets at every x where either has a point or where they cross,
  // calling Operator with the two memberships there (at a vertical step once
  // for each pair of values side by side). True when the operator ended the
  // walk.
  bool Iterate(const TFuzzySet& Other, TFuzzyIterateOperator Operator, TFuzzyIterateState& State) const;

  // The number that stands for the set: its centre of gravity.
  TFzyFloat Defuzzify() const { return MomentDefuzzify(); }
  // Centre of gravity of the area under the points. A set of area 0 gives
  // the mean x of its points weighted by their memberships, or when these
  // are all 0 the middle of its points; a set without points gives 0.
  TFzyFloat MomentDefuzzify() const;
  // Mean of maxima: the mean x of the points of the largest membership; 0
  // for a set without points.
  TFzyFloat MaximumDefuzzify() const;
  // Whether the last defuzzification had nothing to weigh: no points or an
  // area of 0. True before the first defuzzification and again after every
  // change of the points.
  bool Undecidable() const { return FUndecidable; }

  // The shape makers replace the points. Steps, from 1 to 1000, is the
  // number of intervals in each half of a curve.
  //
  // A triangle rising from (Left, 0) to (Center, 1) and falling to
  // (Right, 0). The three points are taken in the order of their x, so a
  // Center outside Left to Right still makes a set.
  void Triangle(TFzyFloat Left, TFzyFloat Center, TFzyFloat Right);
  // An S-curve from 0 at Alpha through 0.5 at the inflection Beta to 1 at
  // Gamma, made of two parabolas; falling from 1 to 0 (a Z-curve) when
  // Growth is clear. Alpha <= Beta <= Gamma.
  void SCurve(int Steps, bool Growth, TFzyFloat Alpha, TFzyFloat Gamma, TFzyFloat Beta);
  // A bell: an S-curve from 0 at Left to 1 at Center, a Z-curve from there
  // to 0 at Right, each with its inflection in its middle.
  // Left <= Center <= Right.
  void PI(int Steps, TFzyFloat Left, TFzyFloat Right, TFzyFloat Center);
  // The same bell from Center - Width to Center + Width; Width >= 0.
  void PI(int Steps, TFzyFloat Width, TFzyFloat Center);
  // The curve 1 / (1 + Weight ((x - Center) / Inflection)^2) from
  // Center - Width to Center + Width: 1 at Center, 1 / (1 + Weight) at a
  // distance of Inflection. Width, Inflection and Weight are above 0.
  void Beta(int Steps, TFzyFloat Width, TFzyFloat Center, TFzyFloat Inflection) {
    Beta(Steps, Width, Center, Inflection, 1);
  }
  void Beta(int Steps, TFzyFloat Width, TFzyFloat Center, TFzyFloat Inflection, TFzyFloat Weight);

  // The points as "(x y)" by "%.4f", separated by blanks.
  String GetValuesToString() const;
  // The points in brackets, "((0.0000 0.0000) (5.0000 1.0000))", which reads
  // back as the same set; SEmptyFuzzy for a set without points.
  String ToString() const override;

  using TCloneableObject::Assign;
  // Copies name, points and shape from another set.
  void Assign(const TPersistent* Source) override;

 protected:
  // A change of the points, counted once per update bracket.
  void PointsChanged();
  void SetShape(TFuzzySetType Type, std::initializer_list<TFzyFloat> Arguments);
  void ReplacePoints(std::vector<TFuzzyPoint> Points);

 private:
  size_t CheckIndex(int Index) const;
  void Combine(const TFuzzySet& Other, TFuzzyOperation Operation, bool Union);
  void CurveHalf(int Steps, TFzyFloat From, TFzyFloat To, bool Rising, std::vector<TFuzzyPoint>& Points) const;

  String FName;
  std::vector<TFuzzyPoint> FPoints;
  TFuzzySetType FSetType = fstPoints;
  int FShapeArgumentCount = 0;
  std::array<TFzyFloat, 4> FShapeArguments{};
  int FUpdateCount = 0;
  bool FChangePending = false;
  mutable bool FUndecidable = true;
};

// The counted set that values hold: a fuzzy set of a variable (which may
// be null), with the expression it came from and the engine as its parser.
//
// A term of a variable is owned by it and points back at it by a plain
// pointer, which the variable clears when it goes; any other set holds its
// variable counted.
class TIFuzzySet : public TFuzzySet {
  TAVO_CLASS(TIFuzzySet, TFuzzySet)
 public:
  TIFuzzySet() = default;
  explicit TIFuzzySet(String Name) : TFuzzySet(std::move(Name)) {}
  TIFuzzySet(TIFuzzyVariable* Variable, String Name);
  ~TIFuzzySet() override;

  TIFuzzyVariable* GetVariable() const { return FVariable; }
  // A term keeps its variable: it fails for a term given another one.
  void SetVariable(TIFuzzyVariable* Value);
  bool IsTerm() const { return FTerm; }
  // A term's name must stay unique among its variable's terms.
  void SetName(const String& Value) override;

  // The set's own parser, else its variable's.
  IFuzzyParser* GetParser() const;
  void SetParser(IFuzzyParser* Value) { FParser = Value; }
  // The expression the set came from; its text when none was given.
  String GetExpression() const;
  void SetExpression(const String& Value) { FExpression = Value; }

  // A new set: this one with a hedge applied. It is no term; it is named
  // and described by the hedge and this set's name ("very hot").
  IFuzzySet Hedge(TFuzzyHedge Hedge) const;
  // These keep the expression up to date: "hot cut 0.5", "hot or cold".
  void ApplyHedge(TFuzzyHedge Hedge) override;
  void Hedge(TBaseFuzzyHedge Hedge, TFzyFloat Value) override;
  void Intersection(const TFuzzySet& Other, TFuzzyOperation Operation = foZadeh) override;
  void Union(const TFuzzySet& Other, TFuzzyOperation Operation = foZadeh) override;

  // The membership at or under which two sets count as disjoint: the
  // variable's fuzzy-equals threshold, 0 without a variable.
  TFzyFloat GetFuzzyEqualsThreshold() const;
  // For another set: whether the largest pointwise minimum of the two is
  // above the threshold. False for anything else; the engine's sets
  // extend both to values.
  bool Equals(const TCloneableObject* Other) const override;
  // For another set: the largest pointwise minimum of the two, the degree
  // to which they meet. 0 for anything else.
  virtual TFzyFloat FuzzyEquals(const TCloneableObject* Other) const;

  ICloneableObject Clone() const override;
  IFuzzySet CloneSet() const;
  using TFuzzySet::Assign;
  // Copies the set with its expression and parser. A set that is no term
  // takes the source's variable too; a term keeps its variable and name.
  void Assign(const TPersistent* Source) override;

 protected:
  // What the set stands for in a composed expression: the expression
  // given, else the name; empty when neither exists.
  String Description() const;

 private:
  friend class TIFuzzyVariable;

  void Combined(const TFuzzySet& Other, TFuzzyOperation Operation, bool Union, const String& Before);

  TIFuzzyVariable* FVariable = nullptr;
  IFuzzyVariable FVariableHold;
  IFuzzyParser* FParser = nullptr;
  String FExpression;
  bool FTerm = false;
};

// A fuzzy variable: a name, a universe of discourse from Minimum to Maximum
// with a unit text, the threshold at or under which memberships count as no
// match, and named terms. A new variable spans 0 to 100. Variables are
// shared objects: make them with Make.
class TIFuzzyVariable : public TCloneableObject {
  TAVO_CLASS(TIFuzzyVariable, TCloneableObject)
 public:
  explicit TIFuzzyVariable(String Name = String()) : FName(std::move(Name)) {}
  ~TIFuzzyVariable() override;

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
  // The terms take the parser too, so that clearing it leaves none behind.
  virtual void SetParser(IFuzzyParser* Value);

  // The terms, in the order they came. Names compare case-sensitively.
  int GetFuzzySetCount() const { return FTerms.Count(); }
  const IFuzzySet& GetFuzzySet(int Index) const { return FTerms.Get(Index); }
  TIFuzzySet* FindFuzzySet(StringView Name) const;
  // Makes a term of that name by CreateFuzzySet; fails when one exists.
  IFuzzySet NewFuzzySet(const String& Name);
  // Makes Set a term; fails when its name is taken or it is a term of
  // another variable.
  void AddFuzzySet(const IFuzzySet& Set);
  // A removed term lives on as a set of this variable that is no term.
  bool RemoveFuzzySet(const TIFuzzySet* Set);
  void ClearFuzzySets();

  // The set for an expression text, read by the parser; fails without one.
  IFuzzySet Parse(const String& Text);

  using TCloneableObject::Assign;
  // Copies the settings and clones of the terms.
  void Assign(const TPersistent* Source) override;
  IFuzzyVariable CloneVariable() const;
  // Same name, universe (within 0.0001) and units, and the same terms by
  // name with the same points (within 0.0001).
  bool Equals(const TCloneableObject* Other) const override;
  String ToString() const override { return FName; }

 protected:
  // The set that NewFuzzySet makes a term. A variable whose sets must be
  // of a class of its own overrides it.
  virtual IFuzzySet CreateFuzzySet(const String& Name);

 private:
  void AdoptTerm(const IFuzzySet& Set);

  String FName;
  double FMinimum = 0;
  double FMaximum = 100;
  String FUnits;
  double FFuzzyEqualsThreshold = 0;
  IFuzzyParser* FParser = nullptr;
  TInterfaceList<TIFuzzySet> FTerms;
};

}  // namespace tavo
