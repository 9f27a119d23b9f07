// Functions callable from the rule language, calls of them, and functions
// written in the rule language (deffunction).
#pragma once

#include <vector>

#include "core/TavoContext.h"

namespace tavo {

class TTavoUserFunction;
class TArgument;

// The maximum argument count that means no limit.
inline constexpr int AnyArgumentCount = 2147483647;

// Marks code that runs once, as an engine sets itself up: the compiler
// keeps such functions together, apart from the code that runs all the
// time, so that starting an engine brings few pages of the program into
// memory. Each built-in function's InitMetaData carries it.
#if defined(__GNUC__)
#define TAVO_SETUP __attribute__((cold))
#else
#define TAVO_SETUP
#endif

// The engines in which a function is installed. Adding or removing one
// tells the function, which tells the engine.
class TBaseReasonerList {
 public:
  explicit TBaseReasonerList(TTavoUserFunction* Owner) : FOwner(Owner) {}
  int Count() const { return int(FItems.size()); }
  IReasoner* Get(int Index) const;
  // Gives the index; a reasoner already there is not added twice.
  int Add(IReasoner* Reasoner);
  void Delete(int Index);
  int IndexOf(const IReasoner* Reasoner) const;
  void Clear();

 private:
  TTavoUserFunction* FOwner;
  std::vector<IReasoner*> FItems;
};

enum TReasonerAction { raAdded, raRemoved };

// A number as the arithmetic functions give it: a 32-bit integer, or a
// float when IsFloat.
struct TNumber {
  double Float = 0;
  int32_t Integer = 0;
  bool IsFloat = false;
  double AsDouble() const { return IsFloat ? Float : double(Integer); }
};

// A function callable from the rule language. Built-in functions derive
// from it, set their name, help and argument counts in InitMetaData, and do
// their work in the virtual Call (adding `using TTavoUserFunction::Call;` to
// keep the checked entry visible).
class TTavoUserFunction : public TCounted<TPersistent> {
  TAVO_CLASS(TTavoUserFunction, TPersistent)
 public:
  TTavoUserFunction() = default;
  explicit TTavoUserFunction(const String& Name) : FPendingName(Name) {}
  ~TTavoUserFunction() override;

  void AfterConstruction() override;
  // Sets name, help text and counts; runs once, after all constructors.
  virtual void InitMetaData() {}
  // What InitMetaData of a built-in function sets: its name, its help text
  // (through CommentFormat), its syntax and its argument counts.
  void SetMetaData(const String& Name, const String& Comment, const String& ArgumentString, int Min, int Max);

  const String& GetFunctionName() const { return FFunctionName; }
  // A new name leaves every engine under the old name and enters under the new.
  virtual void SetFunctionName(const String& Value);
  const String& GetComment() const { return FComment; }
  void SetComment(const String& Value) { FComment = Value; }
  const String& GetArgumentString() const { return FArgumentString; }
  virtual void SetArgumentString(const String& Value) { FArgumentString = Value; }
  virtual int GetMinArgumentCount() const { return FMinArgumentCount; }
  virtual int GetMaxArgumentCount() const { return FMaxArgumentCount; }
  // The counts stay ordered: each pulls the other along.
  virtual void SetMinArgumentCount(int Value);
  virtual void SetMaxArgumentCount(int Value);

  int AddReasoner(IReasoner* Reasoner) { return FReasoners.Add(Reasoner); }
  void DeleteReasoner(int Index) { FReasoners.Delete(Index); }
  void DeleteReasoner(const IReasoner* Reasoner);
  void ClearReasoners() { FReasoners.Clear(); }
  int IndexOfReasoner(const IReasoner* Reasoner) const { return FReasoners.IndexOf(Reasoner); }
  IReasoner* GetReasoner(int Index) const { return FReasoners.Get(Index); }
  int GetReasonerCount() const { return FReasoners.Count(); }
  // An engine joined or left: it takes the function in or out.
  virtual void ReasonerNotification(IReasoner* Reasoner, TReasonerAction Action);

  // The entry of every call: checks the argument count against the
  // function's own limits, then calls.
  void Call(const IFunCall& FunCall, TObject* Context, ITavoValue& Result);
  // The same entry for a call and a context at hand.
  void CallChecked(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result);
  // The function's work; Result starts out null.
  virtual void Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result);
  // The answer as a number, worked out without making a value, from
  // arguments that are numbers the same way (see EvaluateNumber): true when
  // Result holds it. False sends the caller the general way, Call, which
  // then gives the same answer or raises; a caller may have evaluated some
  // arguments already, so only functions without side effects answer here.
  // The entry checks the argument counts; the default answers false.
  bool CallNumericChecked(const TFunctionCall& FunCall, TTavoContext* Context, TNumber& Result);
  virtual bool CallNumeric(const TFunctionCall& FunCall, TTavoContext* Context, TNumber& Result);
  // The truth of a predicate worked out the same way, without making a
  // value: true when Result holds it, which is then what Call would give
  // (anything but FALSE reading as true). False when some argument cannot
  // be read so; the default answers false. It raises only what Call would
  // raise reading the same arguments, and only functions without side
  // effects answer here.
  bool CallTruthChecked(const TFunctionCall& FunCall, TTavoContext* Context, bool& Result);
  virtual bool CallTruth(const TFunctionCall& FunCall, TTavoContext* Context, bool& Result);

  void Assign(const TPersistent* Source) override;
  using TPersistent::ToString;
  // The function's help text.
  String ToString(IReasoner* Reasoner) const;

 protected:
  int FMinArgumentCount = 0;
  int FMaxArgumentCount = 2147483647;
  String FComment;
  TBaseReasonerList FReasoners{this};
  String FFunctionName;
  String FArgumentString;

 private:
  String FPendingName;
};

// One parsed call: a name, unevaluated arguments, and the function it binds
// to at its first execution, for good.
class TFunctionCall : public TCloneableObject {
  TAVO_CLASS(TFunctionCall, TCloneableObject)
 public:
  TFunctionCall() = default;
  TFunctionCall(IReasoner* Reasoner, StringView Name) : FReasoner(Reasoner), FName(InternName(Name)) {}

  int AddArgument(const ITavoValue& Value);
  int AddArgument(double Value, TTavoType Type);
  int AddArgument(int32_t Value, TTavoType Type);
  int AddArgument(const String& Value, TTavoType Type);
  // A fact, a call or a list, held by a new value and shared.
  template <class T, class = decltype(TValueInterfaceType<T>::Type)>
  int AddArgument(const TRef<T>& Intf) {
    return FArguments.Add(Make<TTavoValue>(Intf));
  }
  void Clear() { FArguments.Clear(); }
  void Delete(int Index) { FArguments.Delete(Index); }
  int GetArgumentCount() const { return FArguments.Count(); }
  const ITavoValue& GetArgument(int Index) const { return FArguments.Get(Index); }
  void SetArgument(int Index, const ITavoValue& Value) { FArguments.Put(Index, Value); }
  // Argument Index resolved in Context; a call that gives nothing reads as nil.
  ITavoValue EvaluateArgument(int Index, TTavoContext* Context) const;
  // The same, borrowed (see Evaluate): for a value used at once.
  const ITavoValue& EvaluateArgument(int Index, TTavoContext* Context, ITavoValue& Scratch) const;
  TArgument Argument(int Index, TTavoContext* Context) const;

  IReasoner* GetReasoner() const { return FReasoner; }
  void SetReasoner(IReasoner* Value) { FReasoner = Value; }
  StringView GetName() const { return FName.View(); }
  const String& GetComment() const;
  void SetComment(const String& Value);
  const IUserFunction& GetUserFunction() const { return FUserFunction; }
  // Binds the call; it takes the function's name, or none for null.
  void SetUserFunction(const IUserFunction& Function);
  // Lets go of the bound functions of this call and of the calls among its
  // arguments, keeping the names: a recursive function otherwise holds
  // itself through its own body.
  void Unbind();

  // Binds by name in the reasoner when unbound, then calls with the
  // argument check.
  void Execute(TObject* Context, ITavoValue& Result);
  ITavoValue Execute(TObject* Context);
  // Execute in a scope at hand: the road of evaluation.
  void Execute(TTavoContext* Context, ITavoValue& Result);
  // For a known context: no look-up, the call must be bound.
  ITavoValue SimpleExecute(TTavoContext* Context);

  // Same name (exact case) and strictly equal arguments.
  bool Equals(const TCloneableObject* Other) const override;
  int32_t GetHashCode() const override;
  String ToString() const override;
  // Name, comment, tag and clones of the arguments; never the binding.
  void Assign(const TPersistent* Source) override;
  using TCloneableObject::Assign;
  ICloneableObject Clone() const override;
  IFunCall CloneCall() const;

 private:
  // Binds by name in the reasoner when unbound, for good.
  void Bind();

  IReasoner* FReasoner = nullptr;
  TInterfaceList<TTavoValue> FArguments;
  IUserFunction FUserFunction;
  static TSharedTextRef InternName(StringView Name) { return TSharedTextRef::Adopt(TSharedText::Intern(Name)); }

  // Names are interned: calls of one function share the text. Few calls
  // carry a comment.
  TSharedTextRef FName;
  std::unique_ptr<String> FComment;
};

// An argument evaluated for use at once, within one expression or a short
// block that evaluates nothing else: borrowed when it is a constant or a
// bound variable, held when a call computed it.
class TArgument {
 public:
  TArgument(const TFunctionCall& Call, int Index, TTavoContext* Context)
      : FValue(&Call.EvaluateArgument(Index, Context, FScratch)) {}
  TArgument(const TArgument&) = delete;
  TArgument& operator=(const TArgument&) = delete;
  TTavoValue* operator->() const { return FValue->Get(); }
  TTavoValue& operator*() const { return **FValue; }
  const ITavoValue& Get() const { return *FValue; }

 private:
  ITavoValue FScratch;
  const ITavoValue* FValue;
};

inline TArgument TFunctionCall::Argument(int Index, TTavoContext* Context) const {
  return TArgument(*this, Index, Context);
}

inline bool TTavoUserFunction::CallNumericChecked(const TFunctionCall& FunCall, TTavoContext* Context,
                                                  TNumber& Result) {
  const int Count = FunCall.GetArgumentCount();
  return Count >= FMinArgumentCount && Count <= FMaxArgumentCount && CallNumeric(FunCall, Context, Result);
}

inline bool TTavoUserFunction::CallTruthChecked(const TFunctionCall& FunCall, TTavoContext* Context, bool& Result) {
  const int Count = FunCall.GetArgumentCount();
  return Count >= FMinArgumentCount && Count <= FMaxArgumentCount && CallTruth(FunCall, Context, Result);
}

// A function written in the rule language.
class TInterpretedFunction : public TTavoUserFunction {
  TAVO_CLASS(TInterpretedFunction, TTavoUserFunction)
 public:
  using TTavoUserFunction::TTavoUserFunction;

  // A parameter: dtAtom (present, nil), dtVariable, or dtMultiVariable
  // (takes the remaining arguments as a list).
  virtual void AddArgument(const String& Name, TTavoType Type);
  virtual void AddStatement(const IFunCall& Statement);
  virtual void AddStatement(const ITavoValue& Statement);
  int GetArgumentCount() const { return FArguments.Count(); }
  const ITavoValue& GetArgument(int Index) const { return FArguments.Get(Index); }
  int GetStatementCount() const { return FStatements.Count(); }
  const ITavoValue& GetStatement(int Index) const { return FStatements.Get(Index); }
  int GetOrder() const { return FOrder; }
  void SetOrder(int Value) { FOrder = Value; }

  // The parameters count; a multifield parameter lifts the maximum.
  int GetMinArgumentCount() const override;
  int GetMaxArgumentCount() const override;

  // Runs the body in a child context; a return ends only this body.
  void Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) override;
  using TTavoUserFunction::Call;
  void Assign(const TPersistent* Source) override;
  // Unbinds the calls of the body, so that the function can be freed.
  void UnbindCalls();

 private:
  // Positions for the parameters and the variables that the body binds,
  // with the hint set on each use of them; made at the first call after a
  // change.
  const TFrameLayout& GetLayout();

  TInterfaceList<TTavoValue> FArguments;
  TInterfaceList<TTavoValue> FStatements;
  int FOrder = 0;
  TFrameLayout FLayout;
  // The frame position of each parameter.
  std::vector<int> FParameterSlots;
  bool FLayoutReady = false;
};

// The call's text: "(" name and each argument's text behind a blank ")",
// with a comment's lines in front, each led by "; ".
String FunCallToString(const TFunctionCall& Call);

}  // namespace tavo
