// The engine's default packages. The engine sits below the packages, so the
// operations that make them are defined here, in the top layer, where every
// package is known.
#include "engine/InferenceEngine.h"
#include "fuzzy/FuzzyLogicPackage.h"
#include "packages/BusinessPackage.h"
#include "packages/MathPackage.h"
#include "packages/MiscPackage.h"
#include "packages/ObjectPackage.h"
#include "packages/PredicatePackage.h"
#include "packages/StandardPackage.h"
#include "packages/StringPackage.h"
#include "packages/TavoPackages.h"
#include "packages/TrigonometryPackage.h"

namespace tavo {

void TInferenceEngine::AddDefaultPackages() {
  // One package object per member of Packages, owned by the engine, in the
  // fixed order standard, miscellaneous, predicate, math, string, object,
  // trigonometry, business, fuzzy logic.
  if (FPackages.Contains(pStandard)) NewComponent<TStandardPackage>(this);
  if (FPackages.Contains(pMiscellaneous)) NewComponent<TMiscPackage>(this);
  if (FPackages.Contains(pPredicate)) NewComponent<TPredicatePackage>(this);
  if (FPackages.Contains(pMath)) NewComponent<TMathPackage>(this);
  if (FPackages.Contains(pString)) NewComponent<TStringPackage>(this);
  if (FPackages.Contains(pObject)) NewComponent<TObjectPackage>(this);
  if (FPackages.Contains(pTrigonometry)) NewComponent<TTrigonometryPackage>(this);
  if (FPackages.Contains(pBusiness)) NewComponent<TBusinessPackage>(this);
  if (FPackages.Contains(pFuzzyLogic)) NewComponent<TFuzzyLogicPackage>(this);
  if (OnAddDefaultPackages) OnAddDefaultPackages(this);
}

void TInferenceEngine::SetPackages(TFunctionPackages Value) {
  if (Value == FPackages) return;
  for (int I = GetComponentCount() - 1; I >= 0; --I)
    if (auto* Package = dynamic_cast<TUserPackage*>(GetComponent(I))) delete Package;
  FPackages = Value;
  AddDefaultPackages();
}

}  // namespace tavo
