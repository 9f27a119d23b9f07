// A rule: its patterns, its actions, its settings, and the bindings that
// say where each variable lies in a matching token.
#pragma once

#include <memory>
#include <vector>

#include "core/TavoContext.h"
#include "core/TavoFunctions.h"
#include "knowledge/TavoPattern.h"

namespace tavo {

class TRule;

// What a rule needs of its engine; the engine implements it.
class IRuleEngine {
 public:
  virtual IReasoner* GetReasoner() = 0;
  virtual int NewRuleId() = 0;
  // Takes the rule out of the network and adds it again.
  virtual void RuleChange(TRule* Rule) = 0;
  // The rule list of the rule's module.
  virtual void AddRuleToList(TRule* Rule) = 0;
  virtual void RemoveRuleFromList(TRule* Rule) = 0;
  // Whether any module's rule list holds the rule.
  virtual bool HoldsRule(const TRule* Rule) const = 0;
  // Whether the rule list holds this very rule under Name.
  virtual bool HoldsRuleName(const TRule* Rule, StringView Name) const = 0;
  virtual void RenameRule(TRule* Rule, const String& OldName, const String& NewName) = 0;
  virtual TTavoPattern* GetInitialFactPattern() const = 0;
  virtual String GenerateSymbol(const String& Prefix) = 0;
  virtual TTavoContext* GetContext() const = 0;
  virtual const IFact& GetNullFact() const = 0;
  // A return without a value leaves the module on top of the focus.
  virtual void PopFocusModule() = 0;
  // Makes the module current and gives the one to go back to, or null.
  virtual IModule FocusRuleModule(StringView Module) = 0;
  virtual void RestoreModule(const IModule& Module) = 0;

 protected:
  ~IRuleEngine() = default;
};

using TRuleFireEvent = std::function<void(TRule* Rule, TTavoContext* Context)>;

// The patterns of a rule, which it owns. Every change reaches the rule.
class TRulePatternList {
 public:
  explicit TRulePatternList(TRule* Rule) : FRule(Rule) {}
  int Count() const { return int(FItems.size()); }
  TTavoPattern* Get(int Index) const { return FItems[size_t(Index)].get(); }
  TTavoPattern* operator[](int Index) const { return Get(Index); }
  // The list owns the pattern from here; the rule runs AddPattern on it.
  int Add(TTavoPattern* Pattern);
  void Insert(int Index, TTavoPattern* Pattern);
  void Delete(int Index);
  void Clear();
  // The first pattern on Template, or -1.
  int IndexOf(const IFactTemplate& Template) const;

 private:
  TRule* FRule;
  std::vector<std::unique_ptr<TTavoPattern>> FItems;
};

// The actions of a rule.
class TRuleActionList {
 public:
  explicit TRuleActionList(TRule* Rule) : FRule(Rule) {}
  int Count() const { return int(FItems.size()); }
  const IFunCall& Get(int Index) const { return FItems[size_t(Index)]; }
  int Add(const IFunCall& Action);
  void Delete(int Index);
  void Clear();

 private:
  TRule* FRule;
  std::vector<IFunCall> FItems;
};

class TRule : public TComponent {
  TAVO_CLASS(TRule, TComponent)
 public:
  explicit TRule(TComponent* Owner = nullptr);
  TRule(TComponent* Owner, const String& Name, const String& Module);
  ~TRule() override;

  int GetID() const { return FID; }
  const String& GetRuleName() const { return FRuleName; }
  // A name with any of " '"#()[]?:$&;<>" is refused.
  virtual void SetRuleName(const String& Value);
  const String& GetComment() const { return FComment; }
  void SetComment(const String& Value) { FComment = Value; }
  const String& GetModule() const { return FModule; }
  void SetModule(const String& Value);
  bool GetOneShot() const { return FOneShot; }
  void SetOneShot(bool Value) { FOneShot = Value; }
  bool GetHasFired() const { return FHasFired; }
  bool GetEnabled() const { return FEnabled; }
  void SetEnabled(bool Value);
  // The flag alone, with no change notice: for a rule that must stay
  // compiled, as the firing one under guard.
  void SetEnabledFlag(bool Value) { FEnabled = Value; }
  bool GetAutoFocus() const { return FAutoFocus; }
  void SetAutoFocus(bool Value) { FAutoFocus = Value; }
  const String& GetCompilation() const { return FCompilation; }
  void SetCompilation(const String& Value) { FCompilation = Value; }
  const String& GetText() const { return FText; }
  void SetText(const String& Value) { FText = Value; }

  // The engine, the rule's owner when that is one.
  TComponent* GetEngine() const { return FEngine; }
  IRuleEngine* GetRuleEngine() const { return FRuleEngine; }
  IReasoner* GetReasoner() const { return FRuleEngine ? FRuleEngine->GetReasoner() : nullptr; }
  virtual void SetEngine(TComponent* Engine);
  String GenerateSymbol(const String& Prefix);

  TRulePatternList& GetPatterns() { return FPatterns; }
  int GetPatternCount() const { return FPatterns.Count(); }
  TTavoPattern* GetPattern(int Index) const { return FPatterns.Get(Index); }
  TRuleActionList& GetActions() { return FActions; }

  int GetBindingCount() const { return int(FBindings.size()); }
  TBinding* GetBinding(int Index) const { return FBindings[size_t(Index)].get(); }
  int IndexOfBinding(StringView Name) const;
  TBinding* GetBindingByName(StringView Name) const;
  // An equal binding already there is given back instead of a new one.
  virtual TBinding* AddBinding(const String& Name, int FactIndex, const String& Slot, int SubIndex);

  int GetSalience() const { return FSalience; }
  const ITavoValue& GetSalienceValue() const { return FSalienceValue; }
  // Stores the expression and evaluates it.
  virtual void SetSalience(const ITavoValue& Value);
  void SetSalienceInteger(int Value);
  virtual int EvaluateSalience();

  // The list's notice of a pattern that has joined it.
  virtual void AddPattern(TTavoPattern* Pattern);
  virtual void Change(TObject* Sender = nullptr);
  void BeginUpdate() { ++FUpdateCount; }
  void EndUpdate();
  // Binds the rule's variables from Token in Context.
  virtual void Prepare(TContextToken* Token, TTavoContext* Context);
  virtual void Fire(TContextToken* Token);
  virtual void Reset() { FHasFired = false; }
  // Empties bindings and patterns, then clones Patterns' patterns in, the
  // generated goal companions aside.
  void SetPatterns(const TRulePatternList& Patterns);
  void Assign(const TPersistent* Source) override;
  String ToString() const override;

  TRuleFireEvent OnFire;
  TNotifyEvent OnChange;

 private:
  friend class TRulePatternList;
  // The rule's module made current; gives the module to go back to.
  IModule FocusModule();
  void RestoreModule(const IModule& Module);
  IRuleEngine* Engine() const;

  int FID = 0;
  int FSalience = 0;
  String FComment;
  String FRuleName;
  ITavoValue FSalienceValue;
  TRuleActionList FActions{this};
  TRulePatternList FPatterns{this};
  std::vector<std::unique_ptr<TBinding>> FBindings;
  // The frame a firing opens: each binding's name at its position, then
  // the rule's name binding; laid out again when the bindings change.
  TFrameLayout FFrameLayout;
  // The position of each binding in the frame; -1 for a local binding.
  std::vector<int> FFramePositions;
  int FRuleNamePosition = -1;
  bool FFrameComplete = false;
  uint64_t FBindingsVersion = 0;
  uint64_t FFrameVersion = ~uint64_t(0);
  // The rule's name as the firing binds it, made again after a rename.
  ITavoValue FRuleNameValue;
  const TFrameLayout& FrameLayout();
  // The value a binding takes from Token; false where it binds nothing.
  bool BindingValue(const TBinding& Binding, TContextToken* Token, const IFact* Null, ITavoValue& Value) const;
  const ITavoValue& RuleNameValue();
  TComponent* FEngine = nullptr;
  IRuleEngine* FRuleEngine = nullptr;
  String FCompilation;
  String FText;
  int FUpdateCount = 0;
  bool FOneShot = false;
  bool FHasFired = false;
  bool FEnabled = true;
  String FModule;
  bool FAutoFocus = false;
};

}  // namespace tavo
