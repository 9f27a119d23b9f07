// The printers: each model object back to rule-language text that the
// parser reads again. Saving, the listing functions and the ppdef...
// functions print through here. Lines end in CR LF.
#pragma once

#include "core/TavoFunctions.h"
#include "core/TavoVectors.h"
#include "engine/TavoModule.h"
#include "knowledge/TavoFactSets.h"
#include "knowledge/TavoFacts.h"
#include "knowledge/TavoRule.h"
#include "language/TavoParser.h"

namespace tavo {

// (deffacts name "comment" fact...)
String PrettyPrint(const TFactSet& FactSet, bool Qualify);
// (template value...) or (template (slot value)...).
String PrettyPrint(const IFact& Fact);
// One slot of a fact as it stands in the fact's text: (slot value), or the
// bare values of an ordered template; empty for an empty value.
String PrettyPrintFactSlot(const IFact& Fact, const String& SlotName);
String PrettyPrintFactSlot(const IFact& Fact, const String& SlotName, const ITavoValue& Value);
String PrettyPrintFactSlot(const IFact& Fact, const String& SlotName, const String& ValueText);
// (slot name ...) or (multislot name ...).
String PrettyPrint(const IFactSlot& Slot);
String PrettyPrint(const IFactTemplate& Template, bool Qualify);
// The call, behind its comment lines. SpecialForm prints every argument
// after the first in parentheses.
String PrettyPrint(const IFunCall& Call, bool SpecialForm = false);
// (term name shape) with AsTerm, else the bare shape.
String PrettyPrint(const IFuzzySet& Set, bool AsTerm);
// The range, units and values clauses of a fuzzy type.
String PrettyPrint(const IFuzzyVariable& Variable);
String PrettyPrint(const IModule& Module);
// The whole defrule. Generated filler variables are named by the rule's
// engine.
String PrettyPrint(const TRule& Rule, bool Qualify);
// The patterns or the actions of a rule, each line indented.
String PrettyPrint(const TRule& Rule, TRuleConstruct Half);
// One conditional element. Symbols names the fillers of slots without a
// printable test; without one, the fillers are numbered within the pattern.
String PrettyPrint(const TTavoPattern& Pattern, IRuleEngine* Symbols = nullptr);
// ?name = value
String PrettyPrintVariable(const String& Name, const ITavoValue& Value);
// ((x y) ...), or empty text without points.
String PrettyPrint(const ISingletonsVector& Singletons);
String PrettyPrint(const IInterpretedFunction& Function);
// A deffunction for an interpreted function; for any other, its help as a
// block of comment lines: name, description and syntax.
String PrettyPrint(const IUserFunction& Function);
// The deftype; Implicit prints only the clauses, as they stand inside a
// slot definition.
String PrettyPrint(const ITavoDefinedType& Type, bool Qualify, bool Implicit = false);
// A construct's help as comment lines: what it does, and its syntax.
String PrettyPrint(TParsedType Type);
// (defglobal ?*name* = value ...)
String PrettyPrint(const TValueHashTable& Globals);

}  // namespace tavo
