// The standard package: control flow, comparison, the engine's storage and
// run control, watches, printing, files and logical names, and the
// multifield functions. Every engine gets it by default.
#pragma once

#include "packages/TavoPackages.h"

namespace tavo {

// Raised by exit. It ends execution without a message like any silent
// abort, and try lets it pass.
class EExit : public EAbort {
 public:
  EExit() = default;
};

// One class per function (TAVO_FUNCTION). Arguments arrive unevaluated;
// each function resolves the ones it needs, when it needs them.

// A predicate that also answers by CallTruth.
#define TAVO_PREDICATE_FUNCTION(ClassName)                                                       \
  class ClassName : public TTavoUserFunction {                                                   \
    TAVO_FUNCTION_MEMBERS(ClassName)                                                             \
    bool CallTruth(const TFunctionCall& FunCall, TTavoContext* Context, bool& Result) override; \
  };

// Control.
TAVO_FUNCTION(TIfFunction)
TAVO_FUNCTION(TWhileFunction)
TAVO_FUNCTION(TForEachFunction)
TAVO_FUNCTION(TTryFunction)
TAVO_FUNCTION(TThrowFunction)
TAVO_FUNCTION(TReturnFunction)
TAVO_FUNCTION(TBindFunction)

// Logic and comparison.
TAVO_PREDICATE_FUNCTION(TAndFunction)
TAVO_PREDICATE_FUNCTION(TOrFunction)
TAVO_PREDICATE_FUNCTION(TNotFunction)
TAVO_FUNCTION(TEqFunction)
TAVO_FUNCTION(TEqStarFunction)
TAVO_FUNCTION(TNeqFunction)
TAVO_PREDICATE_FUNCTION(TEqualsFunction)
TAVO_PREDICATE_FUNCTION(TNotEqualsFunction)
TAVO_PREDICATE_FUNCTION(TGtFunction)
TAVO_PREDICATE_FUNCTION(TGtOrEqFunction)
TAVO_PREDICATE_FUNCTION(TLtFunction)
TAVO_PREDICATE_FUNCTION(TLtOrEqFunction)

// Variables, symbols and storage.
TAVO_FUNCTION(TExtractGlobalFunction)
TAVO_FUNCTION(TGenSymStarFunction)
TAVO_FUNCTION(TStoreFunction)
TAVO_FUNCTION(TFetchFunction)
TAVO_FUNCTION(TClearStorageFunction)

// The engine.
TAVO_FUNCTION(TRunFunction)
TAVO_FUNCTION(THaltFunction)
TAVO_FUNCTION(TExitFunction)
TAVO_FUNCTION(TVersionFunction)
TAVO_FUNCTION(TWatchFunction)
TAVO_FUNCTION(TUnwatchFunction)

// Facts.
TAVO_FUNCTION(TAssertFunction)
TAVO_FUNCTION(TAssertStringFunction)
TAVO_FUNCTION(TRetractFunction)
TAVO_FUNCTION(TRetractStringFunction)
TAVO_FUNCTION(TModifyFunction)
TAVO_FUNCTION(TDuplicateFunction)
TAVO_FUNCTION(TGetSlotValueFunction)
TAVO_FUNCTION(TGetFactDuplicationFunction)
TAVO_FUNCTION(TSetFactDuplicationFunction)
TAVO_FUNCTION(TDoBackwardChainingFunction)

// Output.
TAVO_FUNCTION(TResetFunction)
TAVO_FUNCTION(TClearFunction)
TAVO_FUNCTION(TPrintOutFunction)
TAVO_FUNCTION(TFormatFunction)
TAVO_FUNCTION(TReadFunction)
TAVO_FUNCTION(TReadLineFunction)

// Saving and loading.
TAVO_FUNCTION(TLoadFunction)
TAVO_FUNCTION(TSaveFunction)
TAVO_FUNCTION(TLoadFactsFunction)
TAVO_FUNCTION(TSaveFactsFunction)

// Files, logical names, batch and capture.
TAVO_FUNCTION(TOpenFunction)
TAVO_FUNCTION(TCloseFunction)
TAVO_FUNCTION(TBatchFunction)
TAVO_FUNCTION(TDribbleOnFunction)
TAVO_FUNCTION(TDribbleOffFunction)
TAVO_FUNCTION(TRemoveFunction)
TAVO_FUNCTION(TRenameFunction)

// Multifields. Positions count from 0.
TAVO_FUNCTION(TCreateMFFunction)
TAVO_FUNCTION(TDeleteMFFunction)
TAVO_FUNCTION(TExplodeMFFunction)
TAVO_FUNCTION(TFirstMFFunction)
TAVO_FUNCTION(TImplodeMFFunction)
TAVO_FUNCTION(TInsertMFFunction)
TAVO_FUNCTION(TLengthMFFunction)
TAVO_FUNCTION(TMemberFunction)
TAVO_FUNCTION(TMemberMFFunction)
TAVO_FUNCTION(TNthMFFunction)
TAVO_FUNCTION(TReplaceMFFunction)
TAVO_FUNCTION(TRestMFFunction)
TAVO_FUNCTION(TSubSeqMFFunction)
TAVO_FUNCTION(TSubSetpMFFunction)

#undef TAVO_PREDICATE_FUNCTION

// Modules and the focus stack.
enum TFocusModuleFunctionType { fmfFocus, fmfClearFocusStack, fmfGetFocus, fmfGetFocusStack, fmfPopFocus };

// focus, clear-focus-stack, get-focus, get-focus-stack, pop-focus.
class TFocusModuleFunction : public TTavoUserFunction {
  TAVO_CLASS(TFocusModuleFunction, TTavoUserFunction)
 public:
  explicit TFocusModuleFunction(TFocusModuleFunctionType Type = fmfFocus) : FType(Type) {}
  TFocusModuleFunctionType GetType() const { return FType; }
  void InitMetaData() override;
  void Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) override;
  using TTavoUserFunction::Call;

 private:
  TFocusModuleFunctionType FType;
};

enum TCurrentModuleFunctionType { cmfGetCurrentModule, cmfSetCurrentModule };

// get-current-module, set-current-module.
class TCurrentModuleFunction : public TTavoUserFunction {
  TAVO_CLASS(TCurrentModuleFunction, TTavoUserFunction)
 public:
  explicit TCurrentModuleFunction(TCurrentModuleFunctionType Type = cmfGetCurrentModule) : FType(Type) {}
  TCurrentModuleFunctionType GetType() const { return FType; }
  void InitMetaData() override;
  void Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) override;
  using TTavoUserFunction::Call;

 private:
  TCurrentModuleFunctionType FType;
};

// The file-system families: one class each, one object per name, the
// member chosen by the type, which a name given later also selects.
enum TFileFunctionType {
  fftIsFileExists, fftCopyFile, fftDeleteFile, fftMoveFile, fftRenameFile,
  fftGetFileExt, fftGetFilename, fftGetFilePath, fftReplaceFileExt, fftReplaceFilePath
};
enum TDirectoryFunctionType {
  dftGetCurrentDir, dftSetCurrentDir, dftGetFiles, dftGetDirs, dftGetParentDir, dftGetRootDir, dftIsDirEmpty,
  dftIsDirExists, dftCreateDir, dftCopyDir, dftMoveDir, dftDeleteDir, dftDirDelim
};
enum TPathFunctionType { pftGetHomePath, pftGetDocumentsPath, pftGetTempPath };
enum TOSVersionFunctionType {
  osvGetOSName, osvGetOSArchitecture, osvGetOSPlatform, osvGetOSBuildVersion, osvGetOSMajorVersion,
  osvGetOSMinorVersion
};

#define TAVO_FAMILY_FUNCTION(ClassName, TypeName, Setter, First)                          \
  class ClassName : public TTavoUserFunction {                                            \
    TAVO_CLASS(ClassName, TTavoUserFunction)                                              \
   public:                                                                                \
    explicit ClassName(TypeName Type = First) : FType(Type) {}                            \
    TypeName GetType() const { return FType; }                                            \
    /* Sets the name, help, syntax and argument counts of the member. */                  \
    void Setter(TypeName Value);                                                          \
    void SetFunctionName(const String& Value) override;                                   \
    void InitMetaData() override { Setter(FType); }                                       \
    void Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) override; \
    using TTavoUserFunction::Call;                                                        \
                                                                                          \
   private:                                                                               \
    TypeName FType;                                                                       \
  };
TAVO_FAMILY_FUNCTION(TFileFunction, TFileFunctionType, SetFileFunctionType, fftIsFileExists)
TAVO_FAMILY_FUNCTION(TDirectoryFunction, TDirectoryFunctionType, SetDirectoryFunctionType, dftGetCurrentDir)
TAVO_FAMILY_FUNCTION(TPathFunction, TPathFunctionType, SetPathFunctionType, pftGetHomePath)
TAVO_FAMILY_FUNCTION(TOSVersionFunction, TOSVersionFunctionType, SetOSVersionFunctionType, osvGetOSName)
#undef TAVO_FAMILY_FUNCTION

class TStandardPackage : public TUserPackage {
  TAVO_CLASS(TStandardPackage, TUserPackage)
 public:
  using TUserPackage::TUserPackage;

 protected:
  void CreateFunctions() override;
};

}  // namespace tavo
