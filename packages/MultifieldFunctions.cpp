// The standard package's multifield functions. Positions count from 0. A
// function that gives a list builds a new one of resolved, cloned items, so
// that changing the result never shows through its arguments, and none of
// them changes a list it is given.
#include "core/TavoEvaluator.h"
#include "packages/StandardPackage.h"

namespace tavo {

namespace {

// Item resolved in Context; null stays null.
ITavoValue Resolved(const ITavoValue& Item, TTavoContext* Context) {
  if (!Item) return Item;
  ITavoValue Scratch;
  const ITavoValue& Value = Evaluate(Item, Context, Scratch);
  if (&Value == &Scratch) return Scratch;
  return Value;
}

// Item resolved and cloned, for a new list.
ITavoValue CopyOf(const ITavoValue& Item, TTavoContext* Context) {
  if (!Item) return Item;
  ITavoValue Scratch;
  return Evaluate(Item, Context, Scratch)->CloneValue();
}

ITavoValue ArgumentCopy(TFunctionCall& FunCall, int Index, TTavoContext* Context) {
  return ResolvedArgument(FunCall, Index, Context)->CloneValue();
}

// A value that is no list fails with its own conversion failure.
IValueVector ListArgument(TFunctionCall& FunCall, int Index, TTavoContext* Context) {
  return FunCall.Argument(Index, Context)->GetAsList();
}

int32_t IntegerArgument(TFunctionCall& FunCall, int Index, TTavoContext* Context) {
  return FunCall.Argument(Index, Context)->GetAsInteger();
}

// Copies of the items of Source from First on.
IValueVector CopyItems(const IValueVector& Source, int First, TTavoContext* Context) {
  IValueVector Items = Make<TValueVector>();
  const int Count = Source->GetValueCount();
  if (First < Count) Items->Reserve(Count - First);
  for (int I = First; I < Count; ++I) Items->Add(CopyOf(Source->Get(I), Context));
  return Items;
}

// The start and end of delete$, replace$ and subseq$, read before the list
// itself. Positions beyond the list are not refused here.
void ReadRange(TFunctionCall& FunCall, TTavoContext* Context, int32_t& Start, int32_t& End) {
  Start = IntegerArgument(FunCall, 1, Context);
  End = IntegerArgument(FunCall, 2, Context);
  if (Start > End) throw ETavoException(Format(SInvalidMFParameters, Start, End));
}

// The items of argument 0 whose positions lie outside Start to End.
IValueVector WithoutRange(TFunctionCall& FunCall, TTavoContext* Context, int32_t& Start) {
  int32_t End;
  ReadRange(FunCall, Context, Start, End);
  IValueVector Source = ListArgument(FunCall, 0, Context);
  IValueVector Items = Make<TValueVector>();
  const int Count = Source->GetValueCount();
  for (int I = 0; I < Count; ++I)
    if (I < Start || I > End) Items->Add(CopyOf(Source->Get(I), Context));
  return Items;
}

// Blanks as Trim takes them: every code unit up to U+0020.
bool IsBlankUnit(char16_t C) { return C <= u' '; }

}  // namespace

TAVO_SETUP void TCreateMFFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"create$", u"Returns a multifield of its arguments, each one item, a multifield too",
              u"<expression>*", 0, AnyArgumentCount);
}

void TCreateMFFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  IValueVector Items = Make<TValueVector>();
  Items->Reserve(FunCall.GetArgumentCount());
  for (int I = 0; I < FunCall.GetArgumentCount(); ++I) Items->Add(ArgumentCopy(FunCall, I, Context));
  Result = Make<TTavoValue>(Items);
}

TAVO_SETUP void TDeleteMFFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"delete$",
              u"Returns the multifield without its items from the start to the end position, counted from 0",
              u"<multifield-expression> <start-integer-expression> <end-integer-expression>", 3, 3);
}

void TDeleteMFFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  int32_t Start;
  Result = Make<TTavoValue>(WithoutRange(FunCall, Context, Start));
}

TAVO_SETUP void TExplodeMFFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"explode$", u"Returns a multifield of the blank-separated words of a string, each a symbol",
              u"<string-expression>", 1, 1);
}

void TExplodeMFFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  const String Text = FunCall.Argument(0, Context)->GetAsString();
  const StringView View(Text);
  IValueVector Items = Make<TValueVector>();
  // Words are never read as numbers: "1 2" gives the symbols 1 and 2.
  size_t At = 0;
  for (;;) {
    while (At < View.size() && IsBlankUnit(View[At])) ++At;
    if (At == View.size()) break;
    const size_t Start = At;
    while (At < View.size() && !IsBlankUnit(View[At])) ++At;
    Items->Add(Make<TTavoValue>(View.substr(Start, At - Start), dtAtom));
  }
  Result = Make<TTavoValue>(Items);
}

TAVO_SETUP void TFirstMFFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"first$", u"Returns the first item of a multifield, or nil when it is empty",
              u"<multifield-expression>", 1, 1);
}

void TFirstMFFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  IValueVector Source = ListArgument(FunCall, 0, Context);
  Result = Source->GetValueCount() == 0 ? FCNil : Resolved(Source->Get(0), Context);
}

TAVO_SETUP void TImplodeMFFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"implode$", u"Returns a string of the items of a multifield, separated by one blank",
              u"<multifield-expression>", 1, 1);
}

void TImplodeMFFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  IValueVector Source = ListArgument(FunCall, 0, Context);
  // Each item by its string, so a string item loses its quotes and an item
  // that has no string (a nested list) fails.
  String Text;
  for (int I = 0; I < Source->GetValueCount(); ++I) {
    if (I > 0) Text += u' ';
    if (ITavoValue Item = Resolved(Source->Get(I), Context)) Text += Item->GetAsString();
  }
  Result = Make<TTavoValue>(std::move(Text), dtString);
}

TAVO_SETUP void TInsertMFFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"insert$",
              u"Returns the multifield with the expressions inserted at the position, counted from 0, each one "
              u"in front of the one before",
              u"<multifield-expression> <integer-expression> <expression>*", 2, AnyArgumentCount);
}

void TInsertMFFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  // The result starts from a copy of the argument's items, not from a clone
  // of its value: a cloned list value shares its vector, and inserting into
  // that would change the argument, say the list a variable or a fact's slot
  // holds.
  IValueVector Items = CopyItems(ListArgument(FunCall, 0, Context), 0, Context);
  const int32_t Index = IntegerArgument(FunCall, 1, Context);
  for (int I = 2; I < FunCall.GetArgumentCount(); ++I) Items->Insert(Index, ArgumentCopy(FunCall, I, Context));
  Result = Make<TTavoValue>(Items);
}

TAVO_SETUP void TLengthMFFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"length$", u"Returns the number of items of a multifield", u"<multifield-expression>", 1, 1);
}

void TLengthMFFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  Result = Make<TTavoValue>(int32_t(ListArgument(FunCall, 0, Context)->GetValueCount()), dtInteger);
}

TAVO_SETUP void TMemberFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"member",
              u"Returns the position, counted from 0, of the first of the other arguments equal to the first, "
              u"or FALSE",
              u"<to-find-expression> <expression>+", 2, AnyArgumentCount);
}

void TMemberFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  const ITavoValue Wanted = ResolvedArgument(FunCall, 0, Context);
  // The arguments after a match are not evaluated.
  for (int I = 1; I < FunCall.GetArgumentCount(); ++I)
    if (Wanted->Equals(ResolvedArgument(FunCall, I, Context))) {
      Result = Make<TTavoValue>(int32_t(I - 1), dtInteger);
      return;
    }
  Result = FCFalse;
}

TAVO_SETUP void TMemberMFFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"member$", u"Returns the position, counted from 0, of the value in the multifield, or FALSE",
              u"<expression> <multifield-expression>", 2, 2);
}

void TMemberMFFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  const ITavoValue Wanted = ResolvedArgument(FunCall, 0, Context);
  IValueVector Source = ListArgument(FunCall, 1, Context);
  for (int I = 0; I < Source->GetValueCount(); ++I)
    if (Wanted->Equals(Resolved(Source->Get(I), Context))) {
      Result = Make<TTavoValue>(int32_t(I), dtInteger);
      return;
    }
  Result = FCFalse;
}

TAVO_SETUP void TNthMFFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"nth$", u"Returns the item of the multifield at the position, counted from 0",
              u"<integer-expression> <multifield-expression>", 2, 2);
}

void TNthMFFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  const int32_t Index = IntegerArgument(FunCall, 0, Context);
  IValueVector Source = ListArgument(FunCall, 1, Context);
  Result = Resolved(Source->Get(Index), Context);
}

TAVO_SETUP void TReplaceMFFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"replace$",
              u"Returns the multifield with its items from the start to the end position, counted from 0, "
              u"replaced by the expressions",
              u"<multifield-expression> <start-integer-expression> <end-integer-expression> <expression>*", 3,
              AnyArgumentCount);
}

void TReplaceMFFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  int32_t Start;
  IValueVector Items = WithoutRange(FunCall, Context, Start);
  // Each one goes in at the start, in front of the one before it; a start
  // beyond what is left fails there.
  for (int I = 3; I < FunCall.GetArgumentCount(); ++I) Items->Insert(Start, ArgumentCopy(FunCall, I, Context));
  Result = Make<TTavoValue>(Items);
}

TAVO_SETUP void TRestMFFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"rest$", u"Returns the multifield without its first item", u"<multifield-expression>", 1, 1);
}

void TRestMFFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  // The rest of an empty list is an empty list, as its first is nil.
  Result = Make<TTavoValue>(CopyItems(ListArgument(FunCall, 0, Context), 1, Context));
}

TAVO_SETUP void TSubSeqMFFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"subseq$",
              u"Returns the items of the multifield from the start to the end position, counted from 0",
              u"<multifield-expression> <start-integer-expression> <end-integer-expression>", 3, 3);
}

void TSubSeqMFFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  int32_t Start, End;
  ReadRange(FunCall, Context, Start, End);
  IValueVector Source = ListArgument(FunCall, 0, Context);
  IValueVector Items = Make<TValueVector>();
  // Every position must lie in the list; the list's own check refuses the
  // first that does not. Wide, so that an end of the largest integer ends.
  for (int64_t I = Start; I <= End; ++I) Items->Add(CopyOf(Source->Get(int(I)), Context));
  Result = Make<TTavoValue>(Items);
}

TAVO_SETUP void TSubSetpMFFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"subsetp",
              u"Returns TRUE if every item of the first argument, or the first argument itself when it is no "
              u"multifield, is in the multifield, else FALSE",
              u"<expression> <multifield-expression>", 2, 2);
}

void TSubSetpMFFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  const ITavoValue Subset = ResolvedArgument(FunCall, 0, Context);
  IValueVector Wanted;
  if (Subset->GetDType() == dtList) {
    Wanted = Subset->GetAsList();
  } else {
    Wanted = Make<TValueVector>();
    Wanted->Add(Subset);
  }
  IValueVector Source = ListArgument(FunCall, 1, Context);
  auto Contains = [&](const ITavoValue& Item) {
    for (int I = 0; I < Source->GetValueCount(); ++I)
      if (Item->Equals(Resolved(Source->Get(I), Context))) return true;
    return false;
  };
  for (int I = 0; I < Wanted->GetValueCount(); ++I) {
    ITavoValue Item = Resolved(Wanted->Get(I), Context);
    if (!Item || !Contains(Item)) {
      Result = FCFalse;
      return;
    }
  }
  Result = FCTrue;
}

}  // namespace tavo
