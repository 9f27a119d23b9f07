// The inference engine: the one object a host creates and drives.
#pragma once

#include <iosfwd>
#include <memory>
#include <mutex>

#include "common/MekGenerics.h"
#include "core/TavoConsts.h"
#include "core/TavoInterfaces.h"
#include "engine/EngineCollections.h"
#include "engine/FactList.h"
#include "engine/TavoModule.h"
#include "knowledge/TavoFacts.h"
#include "matching/ReteNetwork.h"
#include "core/TavoFuzzy.h"
#include "fuzzylib/FuzzyConsts.h"

namespace tavo {

enum TFunctionPackage {
  pStandard,
  pPredicate,
  pMath,
  pMiscellaneous,
  pString,
  pObject,
  pTrigonometry,
  pBusiness,
  pFuzzyLogic
};
using TFunctionPackages = TSet<TFunctionPackage>;
inline constexpr TFunctionPackages TavoAllPackages = TFunctionPackages::Range(pStandard, pFuzzyLogic);

enum TTavoObjectType {
  otAgenda,
  otEngineVariables,
  otFacts,
  otFactSets,
  otFactTemplates,
  otGlobalVariables,
  otDefinedTypes,
  otIOStreams,
  otRules,
  otUserFunctions,
  otReteNetwork,
  otModules,
  otFactsPending
};

using TModuleEvent = std::function<void(TObject* Sender, const IModule& Module)>;
using TRuleEvent = std::function<void(TObject* Sender, TRule* Rule)>;
using TAgendaEvent = std::function<void(TObject* Sender, int Index, TActivation* Activation)>;
using TUserFunctionEvent = std::function<void(TObject* Sender, const IUserFunction& UserFunction)>;

class TInferenceEngine : public TComponent,
                         public IReasoner,
                         public IReteEngine,
                         public IRuleEngine,
                         public IFuzzyParser {
  TAVO_CLASS(TInferenceEngine, TComponent)
 public:
  explicit TInferenceEngine(TComponent* AOwner = nullptr);
  ~TInferenceEngine() override;

  // Runs the recognise-act cycle until the agenda and the focus stack are
  // exhausted, halt is called, or MaxFirings rules have fired; gives the
  // number of rules fired.
  int Run(int MaxFirings);
  int Run() { return Run(2147483647); }

  // Symbols and ids.
  String GenerateSymbol(const String& Prefix) override;
  int GetSymbolIndex() const { return FSymbolIndex; }
  // Moves the index to Value when that is greater; any other value moves it
  // on by one, so the index never goes back.
  void SetSymbolIndex(int Value);
  int NewFactId() { return FFactIdCounter++; }
  int NewRuleId() override { return FRuleIdCounter++; }

  // The engine's one lock, re-entrant, made on first use. A host that runs
  // Run in a worker thread brackets its own calls with Lock and Unlock, and
  // calls Lock once before it starts its threads.
  void Lock();
  void Unlock();

  // Modules and focus.
  const TModules& GetModules() const { return FModules; }
  // Adding to or removing from this list adds or removes the module.
  TModules& GetModules() { return FModules; }
  const TModules& GetFocusStack() const { return FFocusStack; }
  const IModule& GetCurrentModule() const override { return FCurrentModule; }
  void SetCurrentModule(const IModule& Module);
  // Adds a module, replacing one of the same name; the main module goes to
  // index 0; then brings in what its imports ask for. Gives the module's
  // index. A module that imports an unknown module (SNoSuchModule) or one
  // that would stand behind it in the list (SInvalidModuleDependency) is
  // refused before anything changes.
  int AddModule(const IModule& Module);
  // Takes a module out of the engine and the focus stack, freeing its objects.
  virtual void RemoveModule(const IModule& Module);
  IModule PeekFocus() const;
  void PushFocus(const IModule& Module);
  void PushFocus(StringView Name);
  IModule PopFocus();
  // Empties the focus stack at once, with no event and no watch line, and
  // halts the run.
  void ClearFocusStack();
  // A module asks to change its name from Old to New.
  void RenameModule(const String& OldName, const String& NewName) override;
  // Rekeys a defined type in the current module's collection.
  void RenameDefinedType(const String& OldName, const String& NewName) override;

  // The factory of the engine's sub-objects; the module-bound kinds take
  // the module. The caller owns the result. A descendant overrides it to
  // supply its own classes; kinds whose classes are not part of the engine
  // yet give null.
  virtual TObject* CreateTavoObject(TTavoObjectType Kind, TModule* Module);

  // The current module's collections.
  TTavoDefinedTypes* GetDefinedTypes() const { return FDefinedTypes; }
  TFactTemplates* GetFactTemplates() const { return FFactTemplates; }
  TFacts* GetFacts() const { return FFacts; }
  TFactSets* GetFactSets() const { return FFactSets; }
  TFactsPending* GetFactsPending() const { return FFactsPending; }
  TActivationAgenda* GetAgenda() const { return FAgenda; }
  TReteNetwork* GetRete() const { return FRete; }
  TRules* GetRules() const { return FRules; }

  // Rules. A host adds a rule through GetRules; the list compiles it into
  // the network and then calls AddRule, which raises OnAddRule.
  virtual void AddRule(TRule* Rule);
  // OnRemoveRule; the rule leaves the network, and is freed unless it is
  // already going or belongs to another owner.
  virtual void RemoveRule(TRule* Rule);
  // Takes a rule out of the networks and frees it when the engine owns it;
  // Detach tells a rule of another owner that it has no engine. During a
  // firing, all this waits until no firing is under way.
  void RetireRule(TRule* Rule, bool Detach);
  // A changed rule leaves the network and is compiled anew, when the rule
  // list holds this very rule under its name.
  void RuleChange(TRule* Rule) override;
  void RenameRule(TRule* Rule, const String& OldName, const String& NewName) override;
  // The compilation of a rule, while compilations are watched.
  void PrintCompilation(TRule* Rule);
  IReasoner* GetReasoner() override { return this; }
  void AddRuleToList(TRule* Rule) override;
  void RemoveRuleFromList(TRule* Rule) override;
  bool HoldsRuleName(const TRule* Rule, StringView Name) const override;
  bool HoldsRule(const TRule* Rule) const override;
  // A rule from its text, compiled as it enters the current module's list;
  // a left or a right side alone for a rule the host holds.
  TRule* ParseRule(const String& Text);
  void ParseRulePatterns(TRule* Rule, const String& Text);
  void ParseRuleActions(TRule* Rule, const String& Text);
  void PopFocusModule() override { PopFocus(); }
  IModule FocusRuleModule(StringView Module) override { return FocusFactSetModule(Module, false); }
  TRuleEvent OnAddRule;
  TRuleEvent OnRemoveRule;
  // After a rule's actions, before its activation leaves the agenda.
  TRuleEvent OnRuleFired;
  TAgendaEvent OnAddActivation;
  TAgendaEvent OnRemoveActivation;
  const IFact& GetNullFact() const override { return FNullFact; }
  TEngineVariables* GetStorage() const { return FStorage.get(); }
  TIOStreams* GetIOStreams() const { return FIOStreams.get(); }
  TGlobalVariables* GetGlobalVariables() const { return FGlobalVariables.get(); }

  // The template of that name in the current module, made as an implied
  // template when it does not exist.
  IFactTemplate CreateFactTemplate(const String& Name) override;
  // The template of that name in the current module, or null.
  IFactTemplate FindFactTemplate(StringView Name) const;
  ITavoDefinedType FindDefinedType(StringView Name) const override;
  IModule FocusFactSetModule(StringView Module, bool Force) override;
  void RestoreModule(const IModule& Module) override;
  void AddFactSet(TFactSet* FactSet) override;
  // Out of whichever module's sets hold it.
  void RemoveFactSet(TFactSet* FactSet) override;
  bool HoldsFactSet(const TFactSet* FactSet) const override;

  // Facts. Assert gives the new id, or -1 for a refused duplicate.
  int Assert(const IFact& Fact, bool Unconditional) override;
  int Assert(const IFact& Fact) { return Assert(Fact, false); }
  // Retracts the fact equal in value to Fact, if there is one.
  void Retract(const IFact& Fact);
  void Retract(int Id);
  virtual void RetractFact(int Index);
  void RetractFact(const IFact& Fact) { RetractFact(FFacts->IndexOf(Fact)); }
  // All facts of the current module go at once.
  virtual void RetractFacts();
  // Enters a fact into a module's list (the current one when Module is
  // null, which stays current afterwards otherwise).
  void AddFactToModule(const IFact& Fact, const IModule& Module);
  // Takes a fact out of a module's list; a given module means -1 as index.
  void RemoveFactFromModule(int Index, const IFact& Fact, const IModule& Module);
  // The modify bracket: the fact is retracted, its slots change in place,
  // and it is asserted again with a new id.
  virtual void BeginFactModify(const IFact& Fact);
  virtual int EndFactModify(const IFact& Fact);
  bool GetModifyingFact() const { return FModifyingFact; }
  // Queues an assert ("+") or retract ("-") for the end of the current one.
  void AddPendingFact(const IFact& Fact, bool Assert) override;
  virtual void ProcessPendingFacts();
  int GetFactIdCounter() const override { return FFactIdCounter; }
  void SetFactIdCounter(int Value) { FFactIdCounter = Value; }

  // Dependants: the facts, fact-set entries and rules that rest on a
  // template, and the templates that rest on a defined type. A dependant's
  // text, with the fact it stood for, or with nothing for a rule.
  using TDependants = std::vector<std::pair<String, IFact>>;
  // Whether the rule matches on the template or makes a fact of it in an
  // action; whether a call or value holds a fact of it.
  static bool IsDependent(const TRule& Rule, const IFactTemplate& Template);
  static bool IsDependent(const IFunCall& Call, const IFactTemplate& Template);
  static bool IsDependent(const ITavoValue& Value, const IFactTemplate& Template);
  // Takes out, in one module, the templates that use the type, with their
  // own dependants; the second form in every module that holds the type.
  virtual void RemoveDependencies(const IModule& Module, const ITavoDefinedType& Type);
  virtual void RemoveDependencies(const ITavoDefinedType& Type);
  // Takes out the template's facts, pending facts, fact-set entries and
  // the rules that match on it, in every module that holds it, and the
  // template from those modules.
  virtual void RemoveDependencies(const IFactTemplate& Template);
  virtual void RemoveDependencies(const IModule& Module, const IFactTemplate& Template);
  // Takes out what rests on the template in the current module, keeping
  // the texts of its facts and of the rules that depend on it in List.
  virtual void RemoveDependencies(const IFactTemplate& Template, TDependants& List);
  // The dependants of every template of the current module.
  virtual void RemoveDependencies();
  virtual void RemoveTypeDependencies();
  // Reads List's texts again: facts are asserted anew, rules compiled
  // anew. A text that no longer reads raises; what follows it is lost.
  virtual void UpdateDependencies(TDependants& List);
  virtual void UpdateDependentFact(const IFact& Old, const IFact& New);
  // Templates of the current module whose slots use Old take New, each
  // through a copy that replaces the template.
  virtual void ReplaceTypesInFactTemplates(const ITavoDefinedType& Old, const ITavoDefinedType& New);
  // The template leaves the modules that hold it, Removing's own table
  // excepted, which is taking it out itself.
  void RemoveTemplateDependants(const IFactTemplate& Template, TModule* Removing);

  // Construct events raised by the collections.
  virtual void AddFactTemplate(const IFactTemplate& Template);
  virtual void RemoveFactTemplate(const IFactTemplate& Template);
  virtual void ReplaceTemplate(const IFactTemplate& Old, const IFactTemplate& New);
  virtual void ClearFactTemplates();
  virtual void AddDefinedType(const ITavoDefinedType& Type);
  virtual void RemoveDefinedType(const ITavoDefinedType& Type);
  virtual void ReplaceDefinedType(const ITavoDefinedType& Old, const ITavoDefinedType& New);
  virtual void ClearDefinedTypes();
  void RenameFactTemplate(const String& OldName, const String& NewName) override;
  TObject* GetGlobalContext() const override;
  TTavoContext* GetContext() const override { return FGlobalContext.get(); }
  // Binds a global in the global context; a call as its value is run first,
  // in a child of that context.
  virtual void ResetGlobalVariable(const String& Name, const ITavoValue& Value);

  // Rule-language text, read by the engine's parser (made on first use, of
  // the class of GetParserType). Execute runs the top-level calls.
  bool Parse(const String& Text, bool Execute = true);
  // The parser's single productions over a text; defined with the parser.
  IFact ParseFact(const String& Text) override;
  ITavoValue ParseValue(const String& Text);
  IFunCall ParseFunCall(const String& Text);
  ITavoValue ParseNExecuteFunCall(const String& Text);
  int ParseConstructType(const String& Text);
  // A fact from its text, resolved in the global context.
  int Assert(const String& Text);
  void Retract(const String& Text);
  // The printed form of the constructs, by the parser's printers with its
  // module-qualifier setting; defined with the parser.
  String PrettyPrint(const IFactTemplate& Template) override;
  String PrettyPrint(const ITavoDefinedType& Type) override;
  String PrettyPrint(const IModule& Module) override;
  String PrettyPrint(const IUserFunction& Function) override;
  String PrettyPrint(const TFactSet& FactSet) override;
  String PrettyPrint(const TRule& Rule) override;
  String PrettyPrint(const TTavoPattern& Pattern) override;
  String PrettyPrint(const IFact& Fact);
  String PrettyPrint(const IFunCall& Call);
  // (defglobal ...) of every global variable.
  String PrettyPrintGlobalVariables();

  // The whole expert system as rule-language text that the parser reads
  // back: settings, globals, deffunctions, then every module with its
  // constructs and facts, then the focus stack. NoComments leaves out the
  // comment lines and the sections that hang on them.
  virtual String GetExpertSystem(bool NoComments);
  // Pictures as Graphviz dot text: the current module's Rete network, and
  // the focus stack with the agenda of every module. Defined with the
  // pictures (EnginePictures).
  String GetNetworkPicture() const;
  String GetAgendaPicture() const;
  // Clear, parse the text, Reset.
  virtual void SetExpertSystem(const String& Text);
  String GetExpertSystemText() { return GetExpertSystem(false); }
  // The whole text in the encoding, behind its byte-order mark.
  virtual void SaveToStream(std::ostream& Stream, TTextEncoding Encoding = teDefault);
  void SaveToFile(const String& FileName, TTextEncoding Encoding = teDefault);
  // Parses the text with no Clear and no Reset. A byte-order mark chooses
  // the encoding whatever Encoding says.
  virtual void LoadFromStream(std::istream& Stream, TTextEncoding Encoding = teDefault);
  void LoadFromFile(const String& FileName, TTextEncoding Encoding = teDefault);
  // The current module's facts, one per line; with template names, only
  // the facts of those templates.
  virtual void SaveFacts(std::ostream& Stream, TTextEncoding Encoding = teDefault);
  virtual void SaveFacts(std::ostream& Stream, const String& TemplateName, TTextEncoding Encoding = teDefault);
  void SaveFacts(std::ostream& Stream, const std::vector<String>& TemplateNames, TTextEncoding Encoding);
  void SaveFactsToFile(const String& FileName, const std::vector<String>& TemplateNames,
                       TTextEncoding Encoding = teDefault);
  // Reads fact forms and asserts them; nothing is cleared.
  virtual void LoadFacts(std::istream& Stream, TTextEncoding Encoding = teDefault);
  void LoadFactsFromFile(const String& FileName, TTextEncoding Encoding = teDefault);
  // One collection of the current module (all modules for SaveModules),
  // in definition order. The loads empty that collection first.
  virtual void SaveDefinedTypes(std::ostream& Stream, TTextEncoding Encoding = teDefault);
  virtual void SaveFactTemplates(std::ostream& Stream, TTextEncoding Encoding = teDefault);
  virtual void SaveRules(std::ostream& Stream, TTextEncoding Encoding = teDefault);
  virtual void SaveModules(std::ostream& Stream, TTextEncoding Encoding = teDefault);
  virtual void LoadDefinedTypes(std::istream& Stream, TTextEncoding Encoding = teDefault);
  virtual void LoadFactTemplates(std::istream& Stream, TTextEncoding Encoding = teDefault);
  virtual void LoadRules(std::istream& Stream, TTextEncoding Encoding = teDefault);
  virtual void LoadModules(std::istream& Stream, TTextEncoding Encoding = teDefault);
  void SaveDefinedTypesToFile(const String& FileName, TTextEncoding Encoding = teDefault);
  void SaveFactTemplatesToFile(const String& FileName, TTextEncoding Encoding = teDefault);
  void SaveRulesToFile(const String& FileName, TTextEncoding Encoding = teDefault);
  void SaveModulesToFile(const String& FileName, TTextEncoding Encoding = teDefault);
  void LoadDefinedTypesFromFile(const String& FileName, TTextEncoding Encoding = teDefault);
  void LoadFactTemplatesFromFile(const String& FileName, TTextEncoding Encoding = teDefault);
  void LoadRulesFromFile(const String& FileName, TTextEncoding Encoding = teDefault);
  void LoadModulesFromFile(const String& FileName, TTextEncoding Encoding = teDefault);
  // Parses a text stream with execution on, the parser's stream restored
  // on every way out.
  bool Parse(std::istream& Stream, TTextEncoding Encoding);
  // Parses Text with Module current for the while.
  void ParseInModule(TModule* Module, const String& Text);
  // Whether the printers write module::name; the parser's setting.
  bool GetPrintModuleQualifiers();
  void SetPrintModuleQualifiers(bool Value);

  // From another engine: its settings, functions, modules with their
  // constructs and facts (which keep their ids), globals, focus stack and
  // current module, so that the copy behaves as the source does. The
  // engine is cleared first. Events are not copied.
  void Assign(const TPersistent* Source) override;

  // The parser object; its class is TTavoParser.
  TObject* GetParserObject();
  const TClass* GetParserType() const { return FParserType; }
  void SetParserType(const TClass* Value) { FParserType = Value; }

  // Back to the starting state: facts cleared in every module, the focus on
  // MAIN, the initial fact asserted last, globals bound anew.
  virtual void Reset();
  // Resets the rules and fact sets of one module.
  virtual void Reset(const IModule& Module);
  // Empties the knowledge: every module but MAIN goes, MAIN loses its facts,
  // templates and types, deffunctions and stored values go; built-in
  // functions and globals stay, and no initial fact is asserted.
  virtual void Clear();
  // Empties one module's knowledge.
  virtual void Clear(const IModule& Module);
  // Clears the facts of one module at once.
  void ClearFacts(const IModule& Module);
  TModuleEvent OnClearModule;

  // Functions. The table holds every function by name; a function that
  // takes the engine among its reasoners enters it, one that leaves it or
  // changes its name leaves the table under its old name.
  TUserFunctions* GetUserFunctions() const { return FUserFunctions.get(); }
  void AddUserFunction(const IUserFunction& Function) override;
  void RemoveUserFunction(const IUserFunction& Function) override;
  bool ContainsUserFunction(StringView Name, IUserFunction& Function) const override;
  IUserFunction GetUserFunction(StringView Name) const;
  void SetUserFunction(const String& Name, const IUserFunction& Function);
  // Raised by the table.
  virtual void FunctionAdded(const IUserFunction& Function);
  virtual void FunctionRemoved(const IUserFunction& Function);

  // Output. "t" and the empty name are the standard channel, which goes to
  // the capture while one is on and to OnPrintOut otherwise; a name that no
  // stream holds raises without a handler and is passed over with one.
  virtual void PrintOut(const String& OutID, const String& Text);
  void PrintOut(const String& Text) { PrintOut(String(), Text); }
  // Input: a line, or a token of the rule language, from a named stream,
  // else from the batch being read (echoed on the standard channel), else
  // through the host's handlers, which must block until input is there.
  // Without any of them the host is told it has to supply a handler.
  virtual String ReadLine(const String& InID);
  // Defined with the lexer, whose tokens it gives.
  virtual IStreamToken ReadToken(const String& InID);

  // Runs the forms of a text stream, or of a file, with execution on; read
  // and readline of the standard channel take the stream's next lines
  // meanwhile. A file that cannot be opened gives false; a failing form
  // raises and ends the batch. Defined with the parser.
  virtual bool Batch(std::istream& Stream, TTextEncoding Encoding = teDefault);
  bool Batch(const String& FileName, TTextEncoding Encoding = teDefault);
  // The batch stream being read, or null.
  TGTextStream* GetInputStream() const { return FInputStream; }
  // Sends the standard channel's output to Stream, which the engine takes,
  // starting with the encoding's preamble. A capture that was on already
  // is no longer written but stays alive, as its owner may still read it,
  // until the engine goes. A file that cannot be created gives false.
  virtual bool StartCapture(std::unique_ptr<std::ostream> Stream, TTextEncoding Encoding = teDefault);
  bool StartCapture(const String& FileName, TTextEncoding Encoding = teDefault);
  // Frees the capture stream; output goes to OnPrintOut again.
  virtual bool StopCapture();
  bool GetCapturing() const { return FOutputStream != nullptr; }

  // How many activations the current agenda holds.
  int GetAgendaCount() const;
  // The activation being fired, which stays on the agenda until its
  // actions are done; null between firings.
  TActivation* GetCurrentAgendaItem() const { return FCurrentAgendaItem; }

  // What the networks ask of the engine. An activation goes on the agenda
  // of its network's module, placed by the salience its rule has just
  // evaluated to.
  void AddActivation(TActivation* Activation) override;
  // Takes the activation off its module's agenda, that module current for
  // the moment, and tells OnRemoveActivation and the watch first; FALSE for
  // the activation being fired, which stays alive for the firing code.
  bool RemoveActivation(TActivation* Activation) override;
  // The same for the entry at Index of the current agenda, which is freed
  // unless it is being fired.
  void RemoveActivation(int Index);
  // OnRuleFired, then the activation leaves the agenda alive: whoever fired
  // it frees it. A oneshot rule's other activations leave with it.
  void RuleFired(TActivation* Activation) override;
  TTavoPattern* GetInitialFactPattern() const override { return FInitialFactPattern; }
  std::vector<IFact> GetNetworkFacts(const TReteNetwork* Network) const override;
  bool IsGlobalVariableName(StringView Name) const override;
  // How many facts the current module holds.
  int GetFactCount() const;

  // Published properties.
  TDuplicateConstructs GetDuplicateConstructs() const { return FDuplicateConstructs; }
  void SetDuplicateConstructs(TDuplicateConstructs Value) { FDuplicateConstructs = Value; }
  TFunctionPackages GetPackages() const { return FPackages; }
  void SetPackages(TFunctionPackages Value);
  bool GetFactDuplication() const { return FFactDuplication; }
  // Equal facts may coexist; the hash-code cache exists only while they may not.
  void SetFactDuplication(bool Value);
  bool GetFuzzyAutoTerms() const { return FFuzzyAutoTerms; }
  void SetFuzzyAutoTerms(bool Value) { FFuzzyAutoTerms = Value; }
  TFuzzyCorrelationMethod GetFuzzyCorrelationMethod() const { return FFuzzyCorrelationMethod; }
  void SetFuzzyCorrelationMethod(TFuzzyCorrelationMethod Value) { FFuzzyCorrelationMethod = Value; }
  TFuzzyInferenceMethod GetFuzzyInferenceMethod() const { return FFuzzyInferenceMethod; }
  void SetFuzzyInferenceMethod(TFuzzyInferenceMethod Value) { FFuzzyInferenceMethod = Value; }
  float GetFuzzyEqualsThreshold() const { return FFuzzyEqualsThreshold; }
  // Held between 0 and 1, and given to the variable of every fuzzy type of
  // every module.
  void SetFuzzyEqualsThreshold(float Value);

  // Fuzzy operations.
  ITavoValue EvalFuzzyExpression(const IFuzzyVariable& Variable, const ITavoValue& Value,
                                 TTavoContext* Context) override;
  // The text as an expression over the variable's terms.
  ITavoValue EvalFuzzyExpression(const IFuzzyVariable& Variable, const String& Text, TTavoContext* Context);
  IFuzzySet ParseFuzzyExpression(TIFuzzyVariable& Variable, const String& Text) override;
  // The terms low, medium and high that a variable lacks.
  virtual void AddDefaultFuzzyTerms(TIFuzzyVariable& Variable);
  // Combines Other into Fact, slot by slot, by the inference method: a
  // union, or an intersection when Union is false.
  virtual void FuzzyOperation(const IFact& Fact, const IFact& Other, bool Union);
  // Shapes the fuzzy values of Fact by the strength of the rule that
  // asserts it, by the correlation method.
  virtual void FuzzyCorrelation(const IFact& Fact, float Strength);
  virtual void FuzzyInference(const IFact& Fact, const IFact& Other);
  // Value's set, cloned, combined with Other's and stored back in Value;
  // lists member by member.
  void FuzzyIntersection(const ITavoValue& Value, const ITavoValue& Other, TFuzzyOperation Operation);
  void FuzzyUnion(const ITavoValue& Value, const ITavoValue& Other, TFuzzyOperation Operation);
  // A handler that does the correlation itself sets Done.
  std::function<void(TObject* Sender, const IFact& Fact, float Strength, bool& Done)> OnFuzzyCorrelation;
  TFactCombineEvent OnFuzzyInference;
  float GetMinActivationStrength() const { return FMinActivationStrength; }
  // Held between 0 and 1, and passed to the current network only.
  void SetMinActivationStrength(float Value);
  TErrorHandling GetParserErrorHandling() const { return FParserErrorHandling; }
  void SetParserErrorHandling(TErrorHandling Value) { FParserErrorHandling = Value; }
  int GetParserMaxErrors() const { return FParserMaxErrors; }
  void SetParserMaxErrors(int Value) { FParserMaxErrors = Value; }
  bool GetResetGlobals() const { return FResetGlobals; }
  void SetResetGlobals(bool Value) { FResetGlobals = Value; }
  TSearchStrategy GetStrategy() const override { return FStrategy; }
  // Where an activation of that salience goes on the current agenda; -1
  // for the end.
  int SearchSalience(int Salience) const { return FAgenda ? tavo::SearchSalience(*FAgenda, Salience, FStrategy) : -1; }
  // A different strategy re-sorts the current agenda: every activation goes
  // back through AddActivation as a clone at full strength.
  virtual void SetStrategy(TSearchStrategy Value);
  TTypeChecks GetTypeChecks() const override { return FTypeChecks; }
  void SetTypeChecks(TTypeChecks Value) { FTypeChecks = Value; }
  TConstructWatches GetWatch() const { return FWatch; }
  void SetWatch(TConstructWatches Value) { FWatch = Value; }
  // Set by the host only; no operation of the engine changes it. With
  // sEveryTime the agenda is re-sorted after each firing.
  TSalience GetEvalSalience() const { return FEvalSalience; }
  void SetEvalSalience(TSalience Value) { FEvalSalience = Value; }
  float GetVersion() const { return FVersion; }
  bool GetHalt() const { return FHalt; }
  void SetHalt(bool Value) { FHalt = Value; }

  // Statistics of the last run, gathered when cwStatistics is watched: the
  // means are sums of the fact count and the agenda size after each firing
  // until the run ends, when they are divided by the firings.
  int GetStatNumRulesFired() const { return FStatNumRulesFired; }
  double GetStatRunTime() const { return FStatRunTime; }
  int GetStatMaxActivations() const { return FStatMaxActivations; }
  float GetStatMeanActivations() const { return FStatMeanActivations; }
  int GetStatMaxFacts() const { return FStatMaxFacts; }
  float GetStatMeanFacts() const { return FStatMeanFacts; }

  // Events. Each is tested for being assigned before the call; the
  // destructor unhooks them all first.
  TPrintOutEvent OnPrintOut;
  TReadLineEvent OnReadLine;
  std::function<void(TObject* Sender, const String& InID, IStreamToken& Token)> OnReadToken;
  TNotifyEvent OnAddDefaultPackages;
  TNotifyEvent OnStartInference;
  TInferenceEvent OnEndInference;
  TModuleEvent OnPushFocus;
  TModuleEvent OnPopFocus;
  TNotifyEvent OnChangeCurrentModule;
  TModuleEvent OnAddModule;
  TModuleEvent OnRemoveModule;
  TNotifyEvent OnClear;
  TNotifyEvent OnReset;
  TFactEvent OnAssertion;
  TFactEvent OnRetraction;
  TNotifyEvent OnClearFacts;
  TFactTemplateEvent OnNewFactTemplate;
  TFactTemplateEvent OnRemoveFactTemplate;
  TNotifyEvent OnClearFactTemplates;
  TTavoDefinedTypeEvent OnAddDefinedType;
  TTavoDefinedTypeEvent OnRemoveDefinedType;
  TNotifyEvent OnClearDefinedTypes;
  TUserFunctionEvent OnAddUserFunction;
  TUserFunctionEvent OnRemoveUserFunction;

 protected:
  // Loads the function packages named by Packages, then OnAddDefaultPackages.
  // Defined with the packages, which sit above the engine.
  virtual void AddDefaultPackages();
  virtual void BeginInference();
  virtual void EndInference();
  virtual void DoChangeCurrentModule();
  // Seconds on a clock that never goes back; the run time is the span
  // between two readings. A descendant may supply its own clock.
  virtual double ClockSeconds() const;

 private:
  void UnhookEvents();
  void RunFiringLoop(int MaxFirings, std::unique_ptr<TTavoAgenda>& Spare);
  void FireActivation();
  void ReorderAgenda(std::unique_ptr<TTavoAgenda>& Spare);
  void SetAgenda(TActivationAgenda& Source);
  void RemoveActivationAt(int Index, bool Free);
  void PrintStatistics();
  void FreeRetiredRules();
  std::vector<std::pair<TRule*, bool>> FRetiredRules;
  void RemoveTemplateFrom(const IModule& Module, const IFactTemplate& Template, bool FromTable);
  void RemovePendingFacts(const IFactTemplate& Template);
  void RemoveFactsOf(const IFactTemplate& Template, TDependants* List);
  void ForgetFactSetFacts(const IFactTemplate& Template, bool Removed);
  void RemoveRules(const std::vector<TRule*>& Rules);
  // The saved text; without facts for a copy, which takes them with ids.
  String ExpertSystemText(bool NoComments, bool WithFacts);
  bool Watching(TConstructWatch Watch) const { return FWatch.Contains(Watch) && OnPrintOut != nullptr; }

  friend class TModule;
  friend class TModules;
  // Raises when an import of Module names a module unknown, or one that
  // would not stand ahead of Module once it is at NewIndex, the namesake
  // Replaced gone.
  void CheckImportOrder(const TModule& Module, int NewIndex, const TModule* Replaced) const;
  // Every module made for this engine, so that it can be told when the
  // engine goes.
  std::vector<TModule*> FKnownModules;

  std::unique_ptr<std::recursive_mutex> FCriticalSection;
  int FFactIdCounter = 0;
  int FRuleIdCounter = 0;
  TSearchStrategy FStrategy = ssDepthFirst;
  TSalience FEvalSalience = sActivate;
  bool FHalt = false;
  int FSymbolIndex = 1;
  bool FResetGlobals = true;
  TConstructWatches FWatch;
  float FVersion = 5.0f;
  TFunctionPackages FPackages;
  bool FFactDuplication = false;
  int FStatNumRulesFired = 0;
  double FStatRunTime = 0;
  int FStatMaxActivations = 0;
  float FStatMeanActivations = 0;
  float FStatMeanFacts = 0;
  int FStatMaxFacts = 0;
  TTypeChecks FTypeChecks;
  TDuplicateConstructs FDuplicateConstructs = dcOverwrite;
  int FParserMaxErrors = 10;
  TErrorHandling FParserErrorHandling = ehRaiseImmediate;
  TFuzzyInferenceMethod FFuzzyInferenceMethod = fimMinMax;
  TFuzzyCorrelationMethod FFuzzyCorrelationMethod = fcmMinimum;
  bool FFuzzyAutoTerms = true;
  float FFuzzyEqualsThreshold = 0.01f;
  float FMinActivationStrength = 0;
  std::unique_ptr<TIOStreams> FIOStreams;
  // The capture, and those that a later capture took the place of, which
  // live on unwritten until the engine goes.
  std::unique_ptr<std::ostream> FOutputStream;
  TTextEncoding FOutputEncoding = teDefault;
  std::vector<std::unique_ptr<std::ostream>> FFormerCaptures;
  // A tokenizer of the language layer while a batch runs.
  TGTextStream* FInputStream = nullptr;
  std::unique_ptr<TTavoContext> FGlobalContext;
  const TClass* FParserType = nullptr;
  std::unique_ptr<TObject> FParser;
  std::unique_ptr<TEngineVariables> FStorage;
  std::unique_ptr<TUserFunctions> FUserFunctions;
  std::unique_ptr<TGlobalVariables> FGlobalVariables;
  TModules FModules;
  TModules FFocusStack;
  // The module being added or removed just now, which the list of all
  // modules takes or lets go without coming back to the engine.
  IModule FIsModuleOp;
  // The current module's objects, mirrored by TModule::FocusModule.
  TTavoDefinedTypes* FDefinedTypes = nullptr;
  TFacts* FFacts = nullptr;
  TFactTemplates* FFactTemplates = nullptr;
  TFactsPending* FFactsPending = nullptr;
  TFactSets* FFactSets = nullptr;
  TActivationAgenda* FAgenda = nullptr;
  TReteNetwork* FRete = nullptr;
  TRules* FRules = nullptr;
  TTavoPattern* FInitialFactPattern = nullptr;
  TActivation* FCurrentAgendaItem = nullptr;
  bool FModifyingFact = false;
  IFact FNullFact;
  IModule FCurrentModule;
};

// Makes a module of the engine current for the life of the scope, without
// an event, and the former one current again at its end.
class TModuleScope {
 public:
  TModuleScope(TInferenceEngine& Engine, const TModule* Module)
      : FEngine(Engine), FPrevious(Module ? Engine.FocusFactSetModule(Module->GetName(), true) : nullptr) {}
  ~TModuleScope() { FEngine.RestoreModule(FPrevious); }
  TModuleScope(const TModuleScope&) = delete;
  TModuleScope& operator=(const TModuleScope&) = delete;

 private:
  TInferenceEngine& FEngine;
  IModule FPrevious;
};

}  // namespace tavo
