// The standard package's functions on files and logical names: streams
// opened under a name for printout, read and readline, batch files, the
// capture of the standard channel, and removing and renaming files.
// Failures of the file system that these functions meet give FALSE, but
// for open, which passes the file layer's exception on.
#include <filesystem>

#include "engine/InferenceEngine.h"
#include "language/TavoClipsStream.h"
#include "packages/StandardPackage.h"

namespace tavo {

namespace {

const ITavoValue& Succeeded(bool Value) { return Value ? FCTrue : FCFalse; }

std::filesystem::path PathOf(TFunctionCall& FunCall, int Index, TTavoContext* Context) {
  return std::filesystem::path(StringToUtf8(FunCall.Argument(Index, Context)->GetAsString()));
}

}  // namespace

// open, close

TAVO_SETUP void TOpenFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"open", u"Opens a file under a logical name to read from (r, the default), write (w), append (a) or both (r+)",
              u"<filename> <logical-name> [a|r|w|r+]", 2, 3);
}

void TOpenFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  const String FileName = FunCall.Argument(0, Context)->GetAsString();
  const String Name = FunCall.Argument(1, Context)->GetAsString();
  const String Mode = FunCall.GetArgumentCount() > 2 ? FunCall.Argument(2, Context)->GetAsString() : String(u"r");
  std::ios::openmode OpenMode;
  if (Mode == u"r")
    OpenMode = std::ios::in;
  else if (Mode == u"w")
    OpenMode = std::ios::out | std::ios::trunc;
  else if (Mode == u"a")
    OpenMode = std::ios::out | std::ios::app;
  else if (Mode == u"r+")
    OpenMode = std::ios::in | std::ios::out;
  else
    throw ETavoException(Format(SInvalidFileAccess, Mode));
  TInferenceEngine& Engine = EngineOf(FunCall, Context);
  // One stream serves read, readline and printout under the name.
  Engine.GetIOStreams()->AddStream(Name, new TTavoClipsFileStream(FileName, OpenMode, &Engine));
  Result = FCTrue;
}

TAVO_SETUP void TCloseFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"close", u"Closes the streams of the logical names, or every one without a name", u"[<logical-name>+]",
              0, AnyArgumentCount);
}

void TCloseFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  TIOStreams& Streams = *EngineOf(FunCall, Context).GetIOStreams();
  std::vector<String> Names;
  if (FunCall.GetArgumentCount() == 0)
    for (const auto& Item : Streams) Names.push_back(Item.Key);
  for (int I = 0; I < FunCall.GetArgumentCount(); ++I) Names.push_back(FunCall.Argument(I, Context)->GetAsString());
  // The table raises for a name it does not hold; closing a name that is
  // not open is no error here, and does nothing.
  for (const String& Name : Names)
    if (Streams.ContainsKey(Name)) Streams.RemoveStream(Name);
  Result = FCTrue;
}

// batch, dribble-on, dribble-off

TAVO_SETUP void TBatchFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"batch", u"Runs the forms of a file; read and readline take the file's next lines meanwhile",
              u"<filename>", 1, 1);
}

void TBatchFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  const String FileName = FunCall.Argument(0, Context)->GetAsString();
  Result = Succeeded(EngineOf(FunCall, Context).Batch(FileName));
}

TAVO_SETUP void TDribbleOnFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"dribble-on", u"Sends the standard output to a file instead until dribble-off", u"<filename>", 1, 1);
}

void TDribbleOnFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  const String FileName = FunCall.Argument(0, Context)->GetAsString();
  Result = Succeeded(EngineOf(FunCall, Context).StartCapture(FileName));
}

TAVO_SETUP void TDribbleOffFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"dribble-off", u"Closes the file of dribble-on; the standard output goes back to the host", u"", 0, 0);
}

void TDribbleOffFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  Result = Succeeded(EngineOf(FunCall, Context).StopCapture());
}

// remove, rename

TAVO_SETUP void TRemoveFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"remove", u"Deletes a file; FALSE when it cannot", u"[<file-name>]", 1, 1);
}

// Files only: a directory stays, and gives FALSE.
void TRemoveFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  const std::filesystem::path Path = PathOf(FunCall, 0, Context);
  std::error_code Error;
  Result = Succeeded(!std::filesystem::is_directory(Path, Error) && std::filesystem::remove(Path, Error));
}

TAVO_SETUP void TRenameFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"rename", u"Renames or moves a file; FALSE when it cannot", u"[<old-file-name> <new-file-name>]", 2, 2);
}

void TRenameFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  const std::filesystem::path Old = PathOf(FunCall, 0, Context);
  const std::filesystem::path New = PathOf(FunCall, 1, Context);
  std::error_code Error;
  std::filesystem::rename(Old, New, Error);
  Result = Succeeded(!Error);
}

}  // namespace tavo
