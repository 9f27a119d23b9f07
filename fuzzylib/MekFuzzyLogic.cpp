// The mathematics of fuzzy sets and the bookkeeping of fuzzy variables.
#include "fuzzylib/MekFuzzyLogic.h"

#include <algorithm>
#include <cmath>

namespace tavo {

namespace {

// A curved hedge is refined until the chords between its points stay this
// close to the curve, splitting an interval at most this often.
constexpr TFzyFloat HedgeTolerance = 0.01;
constexpr int HedgeMaxDepth = 10;
constexpr int MaxCurveSteps = 1000;
// Memberships this close to the height count as maxima.
constexpr TFzyFloat MaximumTolerance = 1e-9;

TFzyFloat Clamp01(TFzyFloat Y) { return Y < 0 ? 0 : Y > 1 ? 1 : Y; }

String FloatText(TFzyFloat Value) { return Format(u"%.4f", Value); }

void CheckPoint(TFzyFloat X, TFzyFloat Y) {
  if (!std::isfinite(X) || !(Y >= 0 && Y <= 1))
    throw EMekException(Format(SFuzzyInvalidPoint, FloatText(X), FloatText(Y)));
}

void CheckSteps(int Steps) {
  if (Steps < 1 || Steps > MaxCurveSteps) throw EMekException(Format(SFuzzyInvalidSteps, Steps));
}

bool Finite(std::initializer_list<TFzyFloat> Values) {
  return std::all_of(Values.begin(), Values.end(), [](TFzyFloat V) { return std::isfinite(V); });
}

bool ByX(const TFuzzyPoint& A, const TFuzzyPoint& B) { return A.X < B.X; }

// Membership of the sorted Points at X where no point lies at X, Index
// being the first point right of X.
TFzyFloat Between(const std::vector<TFuzzyPoint>& Points, size_t Index, TFzyFloat X) {
  if (Points.empty()) return 0;
  if (Index == 0) return Points.front().Y;
  if (Index >= Points.size()) return Points.back().Y;
  const TFuzzyPoint& A = Points[Index - 1];
  const TFuzzyPoint& B = Points[Index];
  return A.Y + (B.Y - A.Y) * (X - A.X) / (B.X - A.X);
}

// Where, besides the points, a walk of two sets must stop: nowhere, where
// they cross, or where their sum crosses 1.
enum TCornerKind { ckNone, ckCrossing, ckSumOne };

TFzyFloat CornerMeasure(TCornerKind Kind, TFzyFloat A, TFzyFloat B) { return Kind == ckSumOne ? A + B - 1 : A - B; }

// Walks two sorted polylines from left to right without allocating: Visit
// gets (x, a, b) at every x of either, at each corner between them, and at
// a vertical step once for each pair of values side by side, the shorter
// run repeating its last value. Answers true when Visit did.
template <class F>
bool WalkPair(const std::vector<TFuzzyPoint>& A, const std::vector<TFuzzyPoint>& B, TCornerKind Corners, F&& Visit) {
  size_t I = 0, J = 0;
  bool First = true;
  TFzyFloat PrevX = 0, PrevA = 0, PrevB = 0;
  while (I < A.size() || J < B.size()) {
    TFzyFloat X = I < A.size() ? A[I].X : B[J].X;
    if (J < B.size() && B[J].X < X) X = B[J].X;
    size_t IEnd = I, JEnd = J;
    while (IEnd < A.size() && A[IEnd].X == X) ++IEnd;
    while (JEnd < B.size() && B[JEnd].X == X) ++JEnd;
    const TFzyFloat ALeft = IEnd > I ? A[I].Y : Between(A, I, X);
    const TFzyFloat BLeft = JEnd > J ? B[J].Y : Between(B, J, X);
    if (!First && Corners != ckNone) {
      const TFzyFloat D0 = CornerMeasure(Corners, PrevA, PrevB);
      const TFzyFloat D1 = CornerMeasure(Corners, ALeft, BLeft);
      if ((D0 < 0 && D1 > 0) || (D0 > 0 && D1 < 0)) {
        const TFzyFloat T = D0 / (D0 - D1);
        if (Visit(PrevX + T * (X - PrevX), PrevA + T * (ALeft - PrevA), PrevB + T * (BLeft - PrevB))) return true;
      }
    }
    const size_t RunA = std::max<size_t>(IEnd - I, 1), RunB = std::max<size_t>(JEnd - J, 1);
    for (size_t K = 0; K < std::max(RunA, RunB); ++K) {
      const TFzyFloat ValueA = IEnd > I ? A[I + std::min(K, RunA - 1)].Y : ALeft;
      const TFzyFloat ValueB = JEnd > J ? B[J + std::min(K, RunB - 1)].Y : BLeft;
      if (Visit(X, ValueA, ValueB)) return true;
    }
    PrevX = X;
    PrevA = IEnd > I ? A[IEnd - 1].Y : ALeft;
    PrevB = JEnd > J ? B[JEnd - 1].Y : BLeft;
    First = false;
    I = IEnd;
    J = JEnd;
  }
  return false;
}

TFzyFloat CombineMemberships(TFzyFloat A, TFzyFloat B, TFuzzyOperation Operation, bool Union) {
  switch (Operation) {
    case foZadeh:
      return Union ? std::max(A, B) : std::min(A, B);
    case foMean:
      return (A + B) / 2;
    case foMeanSqr:
      return (A * A + B * B) / 2;
    case foMeanSqrt:
      return (std::sqrt(A) + std::sqrt(B)) / 2;
    case foProduct:
      return Union ? A + B - A * B : A * B;
    case foBoundedSum:
      return Union ? std::min<TFzyFloat>(1, A + B) : std::max<TFzyFloat>(0, A + B - 1);
    case foSum:
      return Union ? A + B : A * B;
  }
  throw EMekException(Format(SFuzzyInvalidOperation, int(Operation)));
}

// Whether M adds nothing between its neighbours A and B: it lies inside a
// vertical step or, unless KeepLines, on the line from A to B.
bool Redundant(const TFuzzyPoint& A, const TFuzzyPoint& M, const TFuzzyPoint& B, bool KeepLines) {
  if (A.X == B.X) return (M.Y >= A.Y && M.Y <= B.Y) || (M.Y <= A.Y && M.Y >= B.Y);
  if (KeepLines || M.X == A.X || M.X == B.X) return false;
  const TFzyFloat Line = A.Y + (B.Y - A.Y) * (M.X - A.X) / (B.X - A.X);
  return std::fabs(Line - M.Y) <= 1e-12;
}

// Appends P unless it repeats the last point, dropping points that the new
// one makes redundant.
void AppendPoint(std::vector<TFuzzyPoint>& Points, TFuzzyPoint P, bool KeepLines = false) {
  if (!Points.empty() && Points.back().X == P.X && Points.back().Y == P.Y) return;
  while (Points.size() >= 2 && Redundant(Points[Points.size() - 2], Points.back(), P, KeepLines)) Points.pop_back();
  Points.push_back(P);
}

TFzyFloat MaxMembership(const std::vector<TFuzzyPoint>& Points) {
  TFzyFloat Result = 0;
  for (const TFuzzyPoint& P : Points) Result = std::max(Result, P.Y);
  return Result;
}

// The level where y^1.25 meets 1 - y^2, the corner of "slightly".
TFzyFloat SlightlyCorner() {
  static const TFzyFloat Level = [] {
    TFzyFloat Low = 0, High = 1;
    for (int I = 0; I < 60; ++I) {
      const TFzyFloat Middle = (Low + High) / 2;
      (std::pow(Middle, 1.25) < 1 - Middle * Middle ? Low : High) = Middle;
    }
    return (Low + High) / 2;
  }();
  return Level;
}

// One transform of memberships, as the hedges of FuzzyHedgeTable need it.
class TMembershipMap {
 public:
  enum TKind { mkNot, mkPower, mkIntensify, mkSlightly, mkScale, mkShift, mkAlphaCut, mkFloor, mkCut };

  // Tolerance is how close the chords keep to the curve: a map whose
  // result is scaled afterwards tightens it by the scale.
  TMembershipMap(TKind Kind, TFzyFloat Value = 0, TFzyFloat Tolerance = HedgeTolerance)
      : FKind(Kind), FValue(Value), FTolerance(Tolerance) {}

  TFzyFloat operator()(TFzyFloat Y) const {
    switch (FKind) {
      case mkNot:
        return 1 - Y;
      case mkPower:
        return std::pow(Y, FValue);
      case mkIntensify:
        return Y <= 0.5 ? 2 * Y * Y : 1 - 2 * (1 - Y) * (1 - Y);
      case mkSlightly:
        return std::min(std::pow(Y, 1.25), 1 - Y * Y);
      case mkScale:
        return Clamp01(FValue * Y);
      case mkShift:
        return Clamp01(Y + FValue);
      case mkAlphaCut:
        return Y >= FValue ? Y : 0;
      case mkFloor:
        return std::max(Y, FValue);
      case mkCut:
        return std::min(Y, FValue);
    }
    return Y;
  }

  // The transform of the points, following the curve between them.
  std::vector<TFuzzyPoint> Apply(const std::vector<TFuzzyPoint>& Points) const {
    std::vector<TFuzzyPoint> Result;
    if (Points.size() == 1) Result.push_back({Points[0].X, Clamp01((*this)(Points[0].Y))});
    for (size_t I = 0; I + 1 < Points.size(); ++I) {
      // Split the segment at the corners it passes, in the order met.
      TFuzzyPoint Pieces[4];
      size_t Count = 0;
      const TFuzzyPoint S = Points[I], T = Points[I + 1];
      Pieces[Count++] = S;
      TFzyFloat Levels[2];
      const size_t LevelCount = Corners(Levels);
      for (size_t K = 0; K < LevelCount; ++K) {
        const TFzyFloat L = Levels[S.Y <= T.Y ? K : LevelCount - 1 - K];
        if ((S.Y < L && L < T.Y) || (T.Y < L && L < S.Y)) {
          const TFzyFloat Fraction = (L - S.Y) / (T.Y - S.Y);
          Pieces[Count++] = {S.X + Fraction * (T.X - S.X), L};
        }
      }
      Pieces[Count++] = T;
      for (size_t K = 0; K + 1 < Count; ++K) Segment(Pieces[K], Pieces[K + 1], Result);
    }
    return Result;
  }

 private:
  // The levels in (0, 1), ascending, where the transform has a corner.
  size_t Corners(TFzyFloat (&Levels)[2]) const {
    size_t Count = 0;
    auto Add = [&](TFzyFloat L) {
      if (L > 0 && L < 1) Levels[Count++] = L;
    };
    switch (FKind) {
      case mkIntensify:
        Add(0.5);
        break;
      case mkSlightly:
        Add(SlightlyCorner());
        break;
      case mkScale:
        if (FValue > 1) Add(1 / FValue);
        break;
      case mkShift:
        Add(-FValue);
        Add(1 - FValue);
        break;
      case mkAlphaCut:
      case mkFloor:
      case mkCut:
        Add(FValue);
        break;
      default:
        break;
    }
    return Count;
  }

  bool Curved() const { return FKind == mkPower || FKind == mkIntensify || FKind == mkSlightly; }

  // Appends the transform of the segment from S to T, which passes no
  // corner. An alpha cut keeps a segment whole or drops it to 0 whole, so
  // that its edges become vertical steps.
  void Segment(TFuzzyPoint S, TFuzzyPoint T, std::vector<TFuzzyPoint>& Out) const {
    TFzyFloat SY, TY;
    if (FKind == mkAlphaCut) {
      const bool Keep = std::min(S.Y, T.Y) >= FValue;
      SY = Keep ? S.Y : 0;
      TY = Keep ? T.Y : 0;
    } else {
      SY = Clamp01((*this)(S.Y));
      TY = Clamp01((*this)(T.Y));
    }
    Out.push_back({S.X, SY});
    if (Curved() && S.X != T.X && S.Y != T.Y) Refine(S, T, 0, Out);
    Out.push_back({T.X, TY});
  }

  // Splits S to T in halves while the chord strays from the curve; a
  // curve as steep as a square root at 0 strays most at a quarter.
  void Refine(TFuzzyPoint S, TFuzzyPoint T, int Depth, std::vector<TFuzzyPoint>& Out) const {
    if (Depth >= HedgeMaxDepth) return;
    const TFzyFloat SY = Clamp01((*this)(S.Y)), TY = Clamp01((*this)(T.Y));
    TFzyFloat Error = 0;
    for (const TFzyFloat F : {0.25, 0.5, 0.75})
      Error = std::max(Error, std::fabs(Clamp01((*this)(S.Y + F * (T.Y - S.Y))) - (SY + F * (TY - SY))));
    if (Error <= FTolerance) return;
    const TFuzzyPoint M{(S.X + T.X) / 2, (S.Y + T.Y) / 2};
    Refine(S, M, Depth + 1, Out);
    Out.push_back({M.X, Clamp01((*this)(M.Y))});
    Refine(M, T, Depth + 1, Out);
  }

  TKind FKind;
  TFzyFloat FValue;
  TFzyFloat FTolerance;
};

std::vector<TFuzzyPoint> Simplified(const std::vector<TFuzzyPoint>& Points) {
  std::vector<TFuzzyPoint> Result;
  Result.reserve(Points.size());
  for (const TFuzzyPoint& P : Points) AppendPoint(Result, P);
  return Result;
}

void ScaleMemberships(std::vector<TFuzzyPoint>& Points, TFzyFloat Factor) {
  for (TFuzzyPoint& P : Points) P.Y = Clamp01(P.Y * Factor);
}

// Scales the memberships so that the largest becomes Top; a set of height
// 0 stays as it is.
void ScaleToHeight(std::vector<TFuzzyPoint>& Points, TFzyFloat Top) {
  if (const TFzyFloat Height = MaxMembership(Points); Height > 0) ScaleMemberships(Points, Top / Height);
}

// Wraps a compound description in the brackets of fuzzy expressions.
String Bracketed(const String& Text) { return Text.find(u' ') == String::npos ? Text : u"[" + Text + u"]"; }

}  // namespace

bool FuzzyOperatorMinThreshold(TFzyFloat Y, TFzyFloat OtherY, TFuzzyIterateState& State) {
  State.Degree = std::max(State.Degree, std::min(Y, OtherY));
  return State.Degree > State.Threshold;
}

bool FuzzyOperatorMaxOfMin(TFzyFloat Y, TFzyFloat OtherY, TFuzzyIterateState& State) {
  State.Degree = std::max(State.Degree, std::min(Y, OtherY));
  return false;
}

// TFuzzySet

size_t TFuzzySet::CheckIndex(int Index) const {
  if (Index < 0 || Index >= GetCount()) throw EMekException(Format(SListIndexError, Index));
  return size_t(Index);
}

void TFuzzySet::AddPoint(TFzyFloat X, TFzyFloat Y) {
  CheckPoint(X, Y);
  const TFuzzyPoint P{X, Y};
  FPoints.insert(std::upper_bound(FPoints.begin(), FPoints.end(), P, ByX), P);
  PointsChanged();
}

void TFuzzySet::SetX(int Index, TFzyFloat X) {
  const size_t I = CheckIndex(Index);
  CheckPoint(X, FPoints[I].Y);
  const TFuzzyPoint P{X, FPoints[I].Y};
  FPoints.erase(FPoints.begin() + ptrdiff_t(I));
  FPoints.insert(std::upper_bound(FPoints.begin(), FPoints.end(), P, ByX), P);
  PointsChanged();
}

void TFuzzySet::SetY(int Index, TFzyFloat Y) {
  const size_t I = CheckIndex(Index);
  CheckPoint(FPoints[I].X, Y);
  FPoints[I].Y = Y;
  PointsChanged();
}

void TFuzzySet::ClearPoints() {
  FPoints.clear();
  PointsChanged();
}

void TFuzzySet::EndUpdate() {
  if (FUpdateCount == 0) return;
  if (--FUpdateCount == 0 && FChangePending) PointsChanged();
}

void TFuzzySet::PointsChanged() {
  if (FUpdateCount > 0) {
    FChangePending = true;
    return;
  }
  FChangePending = false;
  FSetType = fstPoints;
  FShapeArgumentCount = 0;
  FUndecidable = true;
}

void TFuzzySet::SetShape(TFuzzySetType Type, std::initializer_list<TFzyFloat> Arguments) {
  // The shape describes all the points, whatever changed before it in an
  // open bracket.
  FChangePending = false;
  FUndecidable = true;
  FSetType = Type;
  FShapeArgumentCount = 0;
  for (TFzyFloat Argument : Arguments) FShapeArguments[size_t(FShapeArgumentCount++)] = Argument;
}

void TFuzzySet::ReplacePoints(std::vector<TFuzzyPoint> Points) {
  FPoints = std::move(Points);
  PointsChanged();
}

TFzyFloat TFuzzySet::GetShapeArgument(int Index) const {
  if (Index < 0 || Index >= FShapeArgumentCount) throw EMekException(Format(SListIndexError, Index));
  return FShapeArguments[size_t(Index)];
}

TFzyFloat TFuzzySet::DegreeOfMembership(TFzyFloat X) const {
  if (FPoints.empty() || std::isnan(X)) return 0;
  size_t I = size_t(std::upper_bound(FPoints.begin(), FPoints.end(), TFuzzyPoint{X, 0}, ByX) - FPoints.begin());
  if (I > 0 && FPoints[I - 1].X == X) {
    TFzyFloat Y = 0;
    while (I > 0 && FPoints[I - 1].X == X) Y = std::max(Y, FPoints[--I].Y);
    return Y;
  }
  return Between(FPoints, I, X);
}

TFzyFloat TFuzzySet::GetCompatibilityIndex() const { return MaxMembership(FPoints); }

TFzyFloat TFuzzySet::GetArea() const {
  TFzyFloat Area = 0;
  for (size_t I = 0; I + 1 < FPoints.size(); ++I)
    Area += (FPoints[I + 1].X - FPoints[I].X) * (FPoints[I].Y + FPoints[I + 1].Y) / 2;
  return Area;
}

bool TFuzzySet::SamePoints(const TFuzzySet& Other, TFzyFloat Epsilon) const {
  if (FPoints.size() != Other.FPoints.size()) return false;
  for (size_t I = 0; I < FPoints.size(); ++I)
    if (!FloatEquals(FPoints[I].X, Other.FPoints[I].X, Epsilon) ||
        !FloatEquals(FPoints[I].Y, Other.FPoints[I].Y, Epsilon))
      return false;
  return true;
}

void TFuzzySet::ApplyHedge(TFuzzyHedge Hedge) {
  using M = TMembershipMap;
  std::vector<TFuzzyPoint> Points;
  switch (Hedge) {
    case fhNot:
      Points = M(M::mkNot).Apply(FPoints);
      break;
    case fhVery:
      Points = M(M::mkPower, 2).Apply(FPoints);
      break;
    case fhExtremely:
      Points = M(M::mkPower, 3).Apply(FPoints);
      break;
    case fhSomewhat:
    case fhMoreOrLess:
      Points = M(M::mkPower, 0.5).Apply(FPoints);
      break;
    case fhPlus:
      Points = M(M::mkPower, 1.25).Apply(FPoints);
      break;
    case fhIntensify:
      Points = M(M::mkIntensify).Apply(FPoints);
      break;
    case fhSlightly:
      // The curve tops out at its corner, and norm scales it up from there.
      Points = M(M::mkSlightly, 0, HedgeTolerance * std::pow(SlightlyCorner(), 1.25)).Apply(FPoints);
      ScaleToHeight(Points, 1);
      break;
    case fhNorm:
      Points = FPoints;
      ScaleToHeight(Points, 1);
      break;
    default:
      throw EMekException(Format(SFuzzyInvalidHedge, int(Hedge)));
  }
  ReplacePoints(Simplified(Points));
}

void TFuzzySet::Hedge(TBaseFuzzyHedge Hedge, TFzyFloat Value) {
  using M = TMembershipMap;
  const bool Positive = Value > 0 && std::isfinite(Value);
  if (std::isnan(Value) || ((Hedge == bfhPower || Hedge == bfhRoot) && !Positive))
    throw EMekException(Format(SFuzzyInvalidHedgeNumber, FloatText(Value), BaseFuzzyHedgeName(Hedge)));
  std::vector<TFuzzyPoint> Points;
  switch (Hedge) {
    case bfhPower:
      Points = M(M::mkPower, Value).Apply(FPoints);
      break;
    case bfhRoot:
      Points = M(M::mkPower, 1 / Value).Apply(FPoints);
      break;
    case bfhScale:
      Points = M(M::mkScale, Value).Apply(FPoints);
      break;
    case bfhShift:
      Points = M(M::mkShift, Value).Apply(FPoints);
      break;
    case bfhNormTo:
      Points = FPoints;
      ScaleToHeight(Points, Clamp01(Value));
      break;
    case bfhAlphaCut:
      Points = M(M::mkAlphaCut, Value).Apply(FPoints);
      break;
    case bfhFloor:
      Points = M(M::mkFloor, Value).Apply(FPoints);
      break;
    case bfhCut:
      Points = M(M::mkCut, Value).Apply(FPoints);
      break;
    default:
      throw EMekException(Format(SFuzzyInvalidHedge, int(Hedge)));
  }
  ReplacePoints(Simplified(Points));
}

void TFuzzySet::Combine(const TFuzzySet& Other, TFuzzyOperation Operation, bool Union) {
  const TCornerKind Corners = Operation == foZadeh ? ckCrossing : Operation == foBoundedSum ? ckSumOne : ckNone;
  std::vector<TFuzzyPoint> Result;
  Result.reserve(FPoints.size() + Other.FPoints.size());
  WalkPair(FPoints, Other.FPoints, Corners, [&](TFzyFloat X, TFzyFloat A, TFzyFloat B) {
    AppendPoint(Result, {X, CombineMemberships(A, B, Operation, Union)});
    return false;
  });
  if (Operation == foSum && Union) {
    if (const TFzyFloat Top = MaxMembership(Result); Top > 1) ScaleMemberships(Result, 1 / Top);
  } else {
    for (TFuzzyPoint& P : Result) P.Y = Clamp01(P.Y);
  }
  ReplacePoints(std::move(Result));
}

void TFuzzySet::Intersection(const TFuzzySet& Other, TFuzzyOperation Operation) { Combine(Other, Operation, false); }

void TFuzzySet::Union(const TFuzzySet& Other, TFuzzyOperation Operation) { Combine(Other, Operation, true); }

bool TFuzzySet::Iterate(const TFuzzySet& Other, TFuzzyIterateOperator Operator, TFuzzyIterateState& State) const {
  return WalkPair(FPoints, Other.FPoints, ckCrossing,
                  [&](TFzyFloat, TFzyFloat A, TFzyFloat B) { return Operator(A, B, State); });
}

TFzyFloat TFuzzySet::MomentDefuzzify() const {
  TFzyFloat Area = 0, Moment = 0, Weight = 0, WeightedX = 0;
  for (size_t I = 0; I + 1 < FPoints.size(); ++I) {
    const TFuzzyPoint& A = FPoints[I];
    const TFuzzyPoint& B = FPoints[I + 1];
    const TFzyFloat Width = B.X - A.X;
    Area += Width * (A.Y + B.Y) / 2;
    Moment += Width * (A.X * (2 * A.Y + B.Y) + B.X * (A.Y + 2 * B.Y)) / 6;
  }
  FUndecidable = FPoints.empty() || Area <= 0;
  if (FPoints.empty()) return 0;
  if (Area > 0) return Moment / Area;
  for (const TFuzzyPoint& P : FPoints) {
    Weight += P.Y;
    WeightedX += P.X * P.Y;
  }
  if (Weight > 0) return WeightedX / Weight;
  return (FPoints.front().X + FPoints.back().X) / 2;
}

TFzyFloat TFuzzySet::MaximumDefuzzify() const {
  FUndecidable = FPoints.empty() || GetArea() <= 0;
  if (FPoints.empty()) return 0;
  const TFzyFloat Top = MaxMembership(FPoints);
  TFzyFloat Sum = 0;
  int Count = 0;
  for (const TFuzzyPoint& P : FPoints)
    if (P.Y >= Top - MaximumTolerance) {
      Sum += P.X;
      ++Count;
    }
  return Sum / Count;
}

void TFuzzySet::Triangle(TFzyFloat Left, TFzyFloat Center, TFzyFloat Right) {
  if (!Finite({Left, Center, Right}))
    throw EMekException(Format(SFuzzyInvalidTriangle, FloatText(Left), FloatText(Center), FloatText(Right)));
  std::vector<TFuzzyPoint> Points{{Left, 0}, {Center, 1}, {Right, 0}};
  std::stable_sort(Points.begin(), Points.end(), ByX);
  ReplacePoints(std::move(Points));
  SetShape(fstTriangle, {Left, Center, Right});
}

// Appends half of an S-curve: From to To, rising from 0 to 0.5 or, when
// Rising is clear, from 0.5 to 1, in Steps intervals. The first point is
// left out when Points already ends at From. The curve keeps every point it
// samples, but a half of no width is a plain vertical step.
void TFuzzySet::CurveHalf(int Steps, TFzyFloat From, TFzyFloat To, bool Rising,
                          std::vector<TFuzzyPoint>& Points) const {
  for (int I = Points.empty() ? 0 : 1; I <= Steps; ++I) {
    const TFzyFloat T = TFzyFloat(I) / Steps;
    const TFzyFloat X = I == Steps ? To : From + (To - From) * T;
    AppendPoint(Points, {X, Rising ? T * T / 2 : 1 - (1 - T) * (1 - T) / 2}, true);
  }
}

void TFuzzySet::SCurve(int Steps, bool Growth, TFzyFloat Alpha, TFzyFloat Gamma, TFzyFloat Beta) {
  CheckSteps(Steps);
  if (!(Finite({Alpha, Gamma, Beta}) && Alpha <= Beta && Beta <= Gamma))
    throw EMekException(
        Format(SFuzzyInvalidSCurve, Growth ? u"s" : u"z", FloatText(Alpha), FloatText(Gamma), FloatText(Beta)));
  std::vector<TFuzzyPoint> Points;
  CurveHalf(Steps, Alpha, Beta, true, Points);
  CurveHalf(Steps, Beta, Gamma, false, Points);
  if (!Growth)
    for (TFuzzyPoint& P : Points) P.Y = 1 - P.Y;
  ReplacePoints(std::move(Points));
  SetShape(Growth ? fstSCurve : fstZCurve, {Alpha, Gamma, Beta});
}

void TFuzzySet::PI(int Steps, TFzyFloat Left, TFzyFloat Right, TFzyFloat Center) {
  CheckSteps(Steps);
  if (!(Finite({Left, Right, Center}) && Left <= Center && Center <= Right))
    throw EMekException(Format(SFuzzyInvalidPI, FloatText(Left), FloatText(Right), FloatText(Center)));
  std::vector<TFuzzyPoint> Points;
  const TFzyFloat RiseMiddle = Left + (Center - Left) / 2, FallMiddle = Center + (Right - Center) / 2;
  CurveHalf(Steps, Left, RiseMiddle, true, Points);
  CurveHalf(Steps, RiseMiddle, Center, false, Points);
  // The falling half mirrors a rising curve from Right back to Center.
  std::vector<TFuzzyPoint> Fall;
  CurveHalf(Steps, Right, FallMiddle, true, Fall);
  CurveHalf(Steps, FallMiddle, Center, false, Fall);
  for (size_t I = Fall.size() - 1; I-- > 0;) AppendPoint(Points, Fall[I], true);
  ReplacePoints(std::move(Points));
  SetShape(fstPI, {Left, Right, Center});
}

void TFuzzySet::PI(int Steps, TFzyFloat Width, TFzyFloat Center) {
  if (!(Finite({Width, Center}) && Width >= 0))
    throw EMekException(Format(SFuzzyInvalidPIWidth, FloatText(Width), FloatText(Center)));
  PI(Steps, Center - Width, Center + Width, Center);
  SetShape(fstPI, {Width, Center});
}

void TFuzzySet::Beta(int Steps, TFzyFloat Width, TFzyFloat Center, TFzyFloat Inflection, TFzyFloat Weight) {
  CheckSteps(Steps);
  if (!(Finite({Width, Center, Inflection, Weight}) && Width > 0 && Inflection > 0 && Weight > 0))
    throw EMekException(
        Format(SFuzzyInvalidBeta, FloatText(Width), FloatText(Center), FloatText(Inflection), FloatText(Weight)));
  std::vector<TFuzzyPoint> Points;
  for (int I = -Steps; I <= Steps; ++I) {
    const TFzyFloat X = I == 0 ? Center : Center + Width * I / Steps;
    const TFzyFloat D = (X - Center) / Inflection;
    AppendPoint(Points, {X, 1 / (1 + Weight * D * D)}, true);
  }
  ReplacePoints(std::move(Points));
  if (Weight == 1)
    SetShape(fstBeta, {Width, Center, Inflection});
  else
    SetShape(fstBeta, {Width, Center, Inflection, Weight});
}

String TFuzzySet::GetValuesToString() const {
  String Result;
  for (const TFuzzyPoint& P : FPoints) {
    if (!Result.empty()) Result += u' ';
    Result += u'(';
    AppendFixed(Result, P.X, 4);
    Result += u' ';
    AppendFixed(Result, P.Y, 4);
    Result += u')';
  }
  return Result;
}

String TFuzzySet::ToString() const {
  if (FPoints.empty()) return SEmptyFuzzy;
  return u"(" + GetValuesToString() + u")";
}

void TFuzzySet::Assign(const TPersistent* Source) {
  const auto* Set = dynamic_cast<const TFuzzySet*>(Source);
  if (!Set) {
    TCloneableObject::Assign(Source);
    return;
  }
  if (Set == this) return;
  FName = Set->FName;
  ReplacePoints(Set->FPoints);
  SetShape(Set->FSetType, {});
  FShapeArgumentCount = Set->FShapeArgumentCount;
  FShapeArguments = Set->FShapeArguments;
}

// TIFuzzySet

TIFuzzySet::TIFuzzySet(TIFuzzyVariable* Variable, String Name)
    : TFuzzySet(std::move(Name)), FVariable(Variable), FVariableHold(Variable) {}

TIFuzzySet::~TIFuzzySet() = default;

void TIFuzzySet::SetVariable(TIFuzzyVariable* Value) {
  if (Value == FVariable) return;
  if (FTerm) throw EMekException(Format(SFuzzyTermOfOther, GetName(), FVariable->GetName()));
  FVariableHold = Value;
  FVariable = Value;
}

void TIFuzzySet::SetName(const String& Value) {
  if (FTerm) {
    const TIFuzzySet* Other = FVariable->FindFuzzySet(Value);
    if (Other && Other != this) throw EMekException(Format(SFuzzyTermExists, FVariable->GetName(), Value));
  }
  TFuzzySet::SetName(Value);
}

IFuzzyParser* TIFuzzySet::GetParser() const {
  if (FParser || !FVariable) return FParser;
  return FVariable->GetParser();
}

String TIFuzzySet::GetExpression() const { return FExpression.empty() ? ToString() : FExpression; }

String TIFuzzySet::Description() const { return FExpression.empty() ? GetName() : FExpression; }

IFuzzySet TIFuzzySet::Hedge(TFuzzyHedge Hedge) const {
  IFuzzySet Result = CloneSet();
  Result->ApplyHedge(Hedge);
  Result->TFuzzySet::SetName(GetName().empty() ? String() : FuzzyHedgeName(Hedge) + u" " + GetName());
  return Result;
}

void TIFuzzySet::ApplyHedge(TFuzzyHedge Hedge) {
  const String Before = Description();
  TFuzzySet::ApplyHedge(Hedge);
  FExpression = Before.empty() ? String() : FuzzyHedgeName(Hedge) + u" " + Bracketed(Before);
}

void TIFuzzySet::Hedge(TBaseFuzzyHedge Hedge, TFzyFloat Value) {
  const String Before = Description();
  TFuzzySet::Hedge(Hedge, Value);
  FExpression = Before.empty() ? String() : Format(u"%s %s %g", Bracketed(Before), BaseFuzzyHedgeName(Hedge), Value);
}

void TIFuzzySet::Combined(const TFuzzySet& Other, TFuzzyOperation Operation, bool Union, const String& Before) {
  const auto* Set = dynamic_cast<const TIFuzzySet*>(&Other);
  const String OtherText = Set ? Set->Description() : Other.GetName();
  FExpression = Before.empty() || OtherText.empty()
                    ? String()
                    : Bracketed(Before) + u" " + FuzzyKeyword(Union, Operation) + u" " + Bracketed(OtherText);
}

void TIFuzzySet::Intersection(const TFuzzySet& Other, TFuzzyOperation Operation) {
  const String Before = Description();
  TFuzzySet::Intersection(Other, Operation);
  Combined(Other, Operation, false, Before);
}

void TIFuzzySet::Union(const TFuzzySet& Other, TFuzzyOperation Operation) {
  const String Before = Description();
  TFuzzySet::Union(Other, Operation);
  Combined(Other, Operation, true, Before);
}

TFzyFloat TIFuzzySet::GetFuzzyEqualsThreshold() const { return FVariable ? FVariable->GetFuzzyEqualsThreshold() : 0; }

bool TIFuzzySet::Equals(const TCloneableObject* Other) const {
  const auto* Set = dynamic_cast<const TFuzzySet*>(Other);
  if (!Set) return false;
  TFuzzyIterateState State;
  State.Threshold = GetFuzzyEqualsThreshold();
  return Iterate(*Set, FuzzyOperatorMinThreshold, State);
}

TFzyFloat TIFuzzySet::FuzzyEquals(const TCloneableObject* Other) const {
  const auto* Set = dynamic_cast<const TFuzzySet*>(Other);
  if (!Set) return 0;
  TFuzzyIterateState State;
  Iterate(*Set, FuzzyOperatorMaxOfMin, State);
  return State.Degree;
}

ICloneableObject TIFuzzySet::Clone() const { return CloneSet(); }

IFuzzySet TIFuzzySet::CloneSet() const {
  return IFuzzySet(static_cast<TIFuzzySet*>(ClonePersistentClass(this, ClassType()).release()));
}

void TIFuzzySet::Assign(const TPersistent* Source) {
  if (Source == this) return;
  const String OwnName = GetName();
  TFuzzySet::Assign(Source);
  if (FTerm) TFuzzySet::SetName(OwnName);
  const auto* Set = dynamic_cast<const TIFuzzySet*>(Source);
  if (!Set) return;
  FExpression = Set->FExpression;
  FParser = Set->FParser;
  if (!FTerm) SetVariable(Set->FVariable);
}

// TIFuzzyVariable

TIFuzzyVariable::~TIFuzzyVariable() {
  // The terms may outlive the variable in values that hold them.
  for (const IFuzzySet& Term : FTerms) {
    Term->FVariable = nullptr;
    Term->FTerm = false;
  }
}

void TIFuzzyVariable::SetParser(IFuzzyParser* Value) {
  FParser = Value;
  for (const IFuzzySet& Term : FTerms) Term->SetParser(Value);
}

TIFuzzySet* TIFuzzyVariable::FindFuzzySet(StringView Name) const {
  for (const IFuzzySet& Term : FTerms)
    if (Term->GetName() == Name) return Term.Get();
  return nullptr;
}

IFuzzySet TIFuzzyVariable::CreateFuzzySet(const String& Name) { return Make<TIFuzzySet>(Name); }

IFuzzySet TIFuzzyVariable::NewFuzzySet(const String& Name) {
  if (FindFuzzySet(Name)) throw EMekException(Format(SFuzzyTermExists, FName, Name));
  IFuzzySet Set = CreateFuzzySet(Name);
  AdoptTerm(Set);
  return Set;
}

void TIFuzzyVariable::AddFuzzySet(const IFuzzySet& Set) {
  if (!Set || (Set->FTerm && Set->FVariable == this)) return;
  if (Set->FTerm) throw EMekException(Format(SFuzzyTermOfOther, Set->GetName(), Set->FVariable->GetName()));
  if (FindFuzzySet(Set->GetName())) throw EMekException(Format(SFuzzyTermExists, FName, Set->GetName()));
  AdoptTerm(Set);
}

void TIFuzzyVariable::AdoptTerm(const IFuzzySet& Set) {
  // The set's counted hold may be all that keeps a variable alive; it lets
  // go only once the term is in place.
  IFuzzyVariable Previous = std::move(Set->FVariableHold);
  Set->FVariable = this;
  Set->FTerm = true;
  FTerms.Add(Set);
}

bool TIFuzzyVariable::RemoveFuzzySet(const TIFuzzySet* Set) {
  const int Index = FTerms.IndexOf(Set);
  if (Index < 0) return false;
  const IFuzzySet Term = FTerms.Get(Index);
  FTerms.Delete(Index);
  Term->FTerm = false;
  Term->FVariableHold = this;
  return true;
}

void TIFuzzyVariable::ClearFuzzySets() {
  while (FTerms.Count() > 0) RemoveFuzzySet(FTerms.Last().Get());
}

IFuzzySet TIFuzzyVariable::Parse(const String& Text) {
  if (!FParser) throw EMekException(Format(SFuzzyNoParser, FName, Text));
  return FParser->ParseFuzzyExpression(*this, Text);
}

void TIFuzzyVariable::Assign(const TPersistent* Source) {
  if (auto* Variable = dynamic_cast<const TIFuzzyVariable*>(Source)) {
    if (Variable == this) return;
    FName = Variable->FName;
    FMinimum = Variable->FMinimum;
    FMaximum = Variable->FMaximum;
    FUnits = Variable->FUnits;
    FFuzzyEqualsThreshold = Variable->FFuzzyEqualsThreshold;
    ClearFuzzySets();
    for (const IFuzzySet& Term : Variable->FTerms) AdoptTerm(Term->CloneSet());
    SetParser(Variable->FParser);
    return;
  }
  TCloneableObject::Assign(Source);
}

IFuzzyVariable TIFuzzyVariable::CloneVariable() const { return RefCast<TIFuzzyVariable>(Clone()); }

bool TIFuzzyVariable::Equals(const TCloneableObject* Other) const {
  auto* Variable = dynamic_cast<const TIFuzzyVariable*>(Other);
  if (!Variable) return false;
  if (Variable == this) return true;
  if (Variable->FName != FName || !FloatEquals(Variable->FMinimum, FMinimum, 0.0001) ||
      !FloatEquals(Variable->FMaximum, FMaximum, 0.0001) || Variable->FUnits != FUnits ||
      Variable->FTerms.Count() != FTerms.Count())
    return false;
  for (const IFuzzySet& Term : FTerms) {
    const TIFuzzySet* Same = Variable->FindFuzzySet(Term->GetName());
    if (!Same || !Term->SamePoints(*Same, 0.0001)) return false;
  }
  return true;
}

}  // namespace tavo
