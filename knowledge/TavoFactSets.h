// Fact sets (the deffacts construct): named lists of facts that every reset
// asserts again. Each fact is kept as its text and, once parsed, as a fact
// of its engine, so that a set moves between engines and modules by
// parsing its text anew.
#pragma once

#include "common/MekStringList.h"
#include "knowledge/TavoFacts.h"

namespace tavo {

class TFactSet;

// The lines of a set, each the text of one fact, with the fact beside it
// once parsed.
class TFactSetFacts : public TStringList<IFact> {
 public:
  explicit TFactSetFacts(TFactSet* FactSet) : FFactSet(FactSet) {}
  TFactSet* GetFactSet() const { return FFactSet; }
  int IndexOfData(const TFact* Fact) const;

 private:
  TFactSet* FFactSet;
};

class TFactSet : public TComponent {
  TAVO_CLASS(TFactSet, TComponent)
 public:
  // An engine as owner becomes the set's engine.
  explicit TFactSet(TComponent* Owner = nullptr);
  TFactSet(TComponent* Owner, const String& Name, const String& Comment);
  ~TFactSet() override;

  const String& GetFactSetName() const { return FFactSetName; }
  void SetFactSetName(const String& Value);
  const String& GetComment() const { return FComment; }
  void SetComment(const String& Value) { FComment = Value; }
  // The module's name; empty means the main module.
  const String& GetModule() const { return FModule; }
  // Moves the set to the fact sets of that module, which must exist.
  void SetModule(const String& Value);
  IReasoner* GetEngine() const { return FEngine; }
  // Leaves the old engine's fact sets; the parsed facts, which belong to
  // the old engine's templates, are read anew in the new one.
  void SetEngine(IReasoner* Value);
  // Only changes the engine: nothing is parsed, nothing is dropped.
  void SetEngineNoParse(IReasoner* Value);
  // Lets go of the engine without telling it: the road of a list that
  // takes the set out itself.
  void ForgetEngine();

  int Count() const { return FFacts.Count(); }
  const String& GetText(int Index) const { return FFacts.Get(Index); }
  // The line's text and the fact beside it; the index.
  virtual int AddFact(const IFact& Fact);
  int AddFact(const String& Text);
  // The fact of the line, read from its text the first time it is asked for.
  // The entry's fact, read from its text when first asked for; null for
  // an empty entry.
  IFact GetFact(int Index);
  // The fact as read so far, without reading it.
  IFact GetParsedFact(int Index) const { return FFacts.GetData(Index); }
  // A fact set to null is read again from its text when next asked for.
  void SetFact(int Index, const IFact& Fact);
  // Empties the entry: no text, no fact; it asserts nothing.
  void ClearFact(int Index);
  int IndexOf(const TFact* Fact) const { return FFacts.IndexOfData(Fact); }
  void Remove(const TFact* Fact);
  // Replaces every line; with an engine, each line is read at once.
  void SetFacts(const TStrings& Lines);

  // The module of the set made current, when Force is set or the module
  // exists; gives the module to go back to, or null.
  IModule FocusModule(bool Force) const;
  // Asserts a fresh copy of each fact, its slots evaluated now.
  virtual void Reset();
  // Enters the engine's fact sets when missing, then resets.
  virtual void Reload();
  TFactSet* Clone(TComponent* Owner) const;

  void Assign(const TPersistent* Source) override;
  void Notification(TComponent* Component, TOperation Operation) override;
  // The deffacts text.
  String ToString() const override;

 private:
  // The module made current again, also when a step fails.
  struct TFocus {
    TFocus(const TFactSet& Set, bool Force);
    ~TFocus();
    IReasoner* Engine;
    IModule Previous;
  };
  void ParseLines();

  String FComment;
  IReasoner* FEngine = nullptr;
  // The engine that made the set. A set that gave up its engine to a newer
  // one of its name still stands in this engine's lists until it goes.
  IReasoner* FHome = nullptr;
  String FFactSetName;
  TFactSetFacts FFacts{this};
  String FModule;
};

}  // namespace tavo
