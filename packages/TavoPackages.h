// Host functions and packages of functions: what a host writes to give the
// rule language functions of its own.
#pragma once

#include <initializer_list>
#include <span>
#include <vector>

#include "core/TavoFunctions.h"

namespace tavo {

class TInferenceEngine;
class TCustomUserFunction;
class TTavoInnerFunction;

// The engine a call runs in: the context's, else the call's own reasoner;
// SUnknownEngine when neither is an engine.
TInferenceEngine& EngineOf(const TFunctionCall& FunCall, TTavoContext* Context);

// Argument Index resolved all the way: literal fuzzy points, which the
// evaluator leaves as they are, become their fuzzy set.
ITavoValue ResolvedArgument(const TFunctionCall& FunCall, int Index, TTavoContext* Context);

using TCallEvent = std::function<void(TObject* Sender, const IFunCall& FunCall, TTavoContext* Context,
                                      ITavoValue& Result)>;

// The float unit's traps, for a numeric function whose formula runs in
// double arithmetic: a result that is not a number, from arguments that
// are, is an invalid operation; an infinite result from finite arguments
// is a division by zero when the formula met a pole (AtPole), else an
// overflow. Arguments that are themselves infinite or not numbers pass
// their kind of result on unchecked. Name is the function's, for the
// message; the result comes back when no trap fires.
double TrapFloat(const String& Name, double Result, std::span<const double> Arguments, bool AtPole = false);
inline double TrapFloat(const String& Name, double Result, std::initializer_list<double> Arguments,
                        bool AtPole = false) {
  return TrapFloat(Name, Result, std::span<const double>(Arguments.begin(), Arguments.size()), AtPole);
}

// The members every built-in function class of a package declares, first
// in its body (inside namespace tavo): its metadata and its work, defined
// in the package's source. Members of its own follow, public.
#define TAVO_FUNCTION_MEMBERS(ClassName)                                                 \
  TAVO_CLASS(ClassName, TTavoUserFunction)                                               \
 public:                                                                                 \
  void InitMetaData() override;                                                          \
  void Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) override; \
  using TTavoUserFunction::Call;

// Declares a built-in function class with those members alone.
#define TAVO_FUNCTION(ClassName)               \
  class ClassName : public TTavoUserFunction { \
    TAVO_FUNCTION_MEMBERS(ClassName)           \
  };

// Defines InitMetaData and Call of a function class whose work is a
// statement or two: InitMetaData sets the metadata given, and Call, once the
// inherited Call has cleared Result, runs the statements, which see FunCall,
// Context and Result.
#define TAVO_DEFINE_FUNCTION(ClassName, Name, Comment, ArgumentString, Min, Max, ...)         \
  TAVO_SETUP void ClassName::InitMetaData() {                                               \
    TTavoUserFunction::InitMetaData();                                                      \
    SetMetaData(Name, Comment, ArgumentString, Min, Max);                                   \
  }                                                                                         \
  void ClassName::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) { \
    TTavoUserFunction::Call(FunCall, Context, Result);                                      \
    __VA_ARGS__;                                                                            \
  }

// A built-in function's metadata as SetMetaData takes it: one row of the
// table of a class that serves several functions, one kind each.
struct TFunctionMetaData {
  const char16_t* Name;
  const char16_t* Comment;
  const char16_t* ArgumentString;
  int MinArgumentCount;
  int MaxArgumentCount;
};

// Sets Function's metadata from row Kind of Kinds; a kind beyond the table
// sets none.
void SetKindMetaData(TTavoUserFunction& Function, std::span<const TFunctionMetaData> Kinds, int Kind);

// Makes a component and runs its after-construction step.
template <class T, class... A>
T* NewComponent(A&&... Args) {
  T* Result = new T(std::forward<A>(Args)...);
  Result->AfterConstruction();
  return Result;
}

// Tells an inner function when its owning component goes away.
using TTavoFunctionNexus = TNotificationNexus<TTavoInnerFunction>;

// The function object behind a host-side component, or behind a bare
// OnCall handler when there is no component.
class TTavoInnerFunction : public TTavoUserFunction {
  TAVO_CLASS(TTavoInnerFunction, TTavoUserFunction)
 public:
  explicit TTavoInnerFunction(TObject* Owner = nullptr);
  ~TTavoInnerFunction() override;

  TObject* GetOwner() const { return FOwner; }
  TCallEvent OnCall;
  // The owning component went away.
  virtual void Notification(TComponent* Component, TOperation Operation);
  void Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) override;
  using TTavoUserFunction::Call;

 private:
  TObject* FOwner;
  std::unique_ptr<TTavoFunctionNexus> FNexus;
};

// A host function as a component: name it, set its counts, assign OnCall,
// and give it an engine.
class TCustomUserFunction : public TComponent {
  TAVO_CLASS(TCustomUserFunction, TComponent)
 public:
  explicit TCustomUserFunction(TComponent* AOwner = nullptr);
  ~TCustomUserFunction() override;

  const IUserFunction& GetInnerFunction() const { return FInnerFunction; }
  TInferenceEngine* GetEngine() const { return FEngine; }
  // Moves the function from the old engine to the new one.
  void SetEngine(TInferenceEngine* Value);
  const String& GetFunctionName() const { return FInnerFunction->GetFunctionName(); }
  void SetFunctionName(const String& Value) { FInnerFunction->SetFunctionName(Value); }
  const String& GetComment() const { return FInnerFunction->GetComment(); }
  void SetComment(const String& Value) { FInnerFunction->SetComment(Value); }
  const String& GetArgumentString() const { return FInnerFunction->GetArgumentString(); }
  void SetArgumentString(const String& Value) { FInnerFunction->SetArgumentString(Value); }
  int GetMinArgumentCount() const { return FInnerFunction->GetMinArgumentCount(); }
  int GetMaxArgumentCount() const { return FInnerFunction->GetMaxArgumentCount(); }
  // Each count also rebuilds the syntax text of the arguments.
  void SetMinArgumentCount(int Value);
  void SetMaxArgumentCount(int Value);

  // Gives nil unless OnCall gives something else.
  virtual void Call(const IFunCall& FunCall, TTavoContext* Context, ITavoValue& Result);
  void Notification(TComponent* Component, TOperation Operation) override;

  TCallEvent OnCall;

 private:
  TInferenceEngine* FEngine = nullptr;
  IUserFunction FInnerFunction;
};

// The syntax text of up to Limit arguments: the old text's "<...>" pieces,
// then "<expression>", with brackets around the optional ones.
String CreateArgumentExpressions(StringView OldText, int Min, int Max, int Limit = 10);

class TUserPackage;

// The functions of a package; the package learns of each change.
class TUserFunctionList {
 public:
  explicit TUserFunctionList(TUserPackage* Package) : FPackage(Package) {}
  int Count() const { return int(FItems.size()); }
  const IUserFunction& Get(int Index) const { return FItems.at(size_t(Index)); }
  // The same object twice keeps its first index.
  int Add(const IUserFunction& Function);
  void Delete(int Index);
  void Clear();
  int IndexOf(const IUserFunction& Function) const;
  // The names, each followed by CR LF.
  String ToString() const;

 private:
  TUserPackage* FPackage;
  std::vector<IUserFunction> FItems;
};

// A group of functions installed together into one or more engines. A
// subclass calls the inherited CreateFunctions first, then adds one object
// per function class to Functions.
class TUserPackage : public TComponent {
  TAVO_CLASS(TUserPackage, TComponent)
 public:
  explicit TUserPackage(TComponent* AOwner = nullptr);
  ~TUserPackage() override;
  // Takes the owner as reasoner when it is one, then makes the functions.
  void AfterConstruction() override;

  TUserFunctionList& GetFunctions() { return FFunctions; }
  TInferenceEngine* GetEngine() const { return FEngine; }
  void SetEngine(TInferenceEngine* Value);
  // Empties the functions and makes them anew.
  void Reset();
  int IndexOf(StringView Name) const;

  int GetReasonerCount() const { return int(FReasoners.size()); }
  void AddReasoner(IReasoner* Reasoner);
  void RemoveReasoner(IReasoner* Reasoner);

  TNotifyEvent OnCreateFunctions;

  void Notification(TComponent* Component, TOperation Operation) override;

 protected:
  friend class TUserFunctionList;
  virtual void CreateFunctions();
  virtual void FunctionNotification(const IUserFunction& Function, bool Added);
  virtual void AddFunctions(IReasoner* Reasoner);
  virtual void RemoveFunctions(IReasoner* Reasoner);
  virtual void AddReasoners(const IUserFunction& Function);
  virtual void RemoveReasoners(const IUserFunction& Function);

 private:
  TInferenceEngine* FEngine = nullptr;
  TUserFunctionList FFunctions{this};
  std::vector<IReasoner*> FReasoners;
};

}  // namespace tavo
