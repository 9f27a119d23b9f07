// Angles, their units and distances. Every function reads its arguments as
// numbers and gives a float; angles are radians.
//
// The functions check no domain of their own. Their formulas run in double
// arithmetic, and where that arithmetic would trap on a machine that traps,
// the function raises the trap's failure instead of handing NaN or an
// infinity on: a result that is not a number from arguments that are
// numbers is an invalid operation (acos of 2), an infinite result at a pole
// of the formula is a division by zero (cot of 0), and an infinite result
// from finite arguments elsewhere is an overflow (cosh of 1000).
#pragma once

#include "packages/TavoPackages.h"

namespace tavo {

// The circular and hyperbolic functions, their inverses and reciprocals.
TAVO_FUNCTION(TACosFunction)
TAVO_FUNCTION(TACosHFunction)
TAVO_FUNCTION(TACotFunction)
TAVO_FUNCTION(TACotHFunction)
TAVO_FUNCTION(TACscFunction)
TAVO_FUNCTION(TACscHFunction)
TAVO_FUNCTION(TASecFunction)
TAVO_FUNCTION(TASecHFunction)
TAVO_FUNCTION(TASinFunction)
TAVO_FUNCTION(TASinHFunction)
TAVO_FUNCTION(TATanFunction)
TAVO_FUNCTION(TATanHFunction)
TAVO_FUNCTION(TCosFunction)
TAVO_FUNCTION(TCosHFunction)
TAVO_FUNCTION(TCotFunction)
TAVO_FUNCTION(TCotHFunction)
TAVO_FUNCTION(TCscFunction)
TAVO_FUNCTION(TCscHFunction)
TAVO_FUNCTION(TSecFunction)
TAVO_FUNCTION(TSecHFunction)
TAVO_FUNCTION(TSinFunction)
TAVO_FUNCTION(TSinHFunction)
TAVO_FUNCTION(TTanFunction)
TAVO_FUNCTION(TTanHFunction)

// The units of angles.
TAVO_FUNCTION(TCycleRadFunction)
TAVO_FUNCTION(TRadCycleFunction)
TAVO_FUNCTION(TDegRadFunction)
TAVO_FUNCTION(TRadDegFunction)
TAVO_FUNCTION(TGradRadFunction)
TAVO_FUNCTION(TRadGradFunction)
TAVO_FUNCTION(TDegGradFunction)
TAVO_FUNCTION(TGradDegFunction)

// atan2 and hypotenuse, of a point given as X then Y.
TAVO_FUNCTION(TATan2Function)
TAVO_FUNCTION(THypotenuseFunction)

// The distances of two points given as multifields of coordinates.
TAVO_FUNCTION(TDistanceFunction)
TAVO_FUNCTION(TDistanceSqrFunction)
TAVO_FUNCTION(TDistanceManhattanFunction)

class TTrigonometryPackage : public TUserPackage {
  TAVO_CLASS(TTrigonometryPackage, TUserPackage)
 public:
  using TUserPackage::TUserPackage;

 protected:
  void CreateFunctions() override;
};

}  // namespace tavo
