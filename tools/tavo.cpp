// tavo: runs knowledge bases and gives an interactive prompt.
//
//   tavo FILE...   runs each file's top-level forms in order
//   tavo           a prompt on a terminal, with line editing, history and
//                  completion when built with libedit; forms from standard
//                  input otherwise
//   options before the files set the agenda's strategy and when salience
//   is evaluated (tavo --help)
#include <malloc.h>
#include <pthread.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>

#include "common/MekSanitizer.h"
#include "engine/InferenceEngine.h"
#include "language/TavoClipsParser.h"
#include "packages/StandardPackage.h"
#include "tools/LineEditor.h"
#include "tools/LineEnds.h"

using namespace tavo;

namespace {

constexpr char Usage[] =
    "Usage: tavo [--help] [--strategy=WAY] [--salience=WHEN] [--save=FILE] [--crlf]\n"
    "            [--dot-network=FILE] [--dot-agenda=FILE] [-f FILE]... [FILE...]\n"
    "\n"
    "Runs the top-level forms of each FILE in order, as a batch: expressions,\n"
    "function calls and definitions of the rule language. What the engine\n"
    "prints goes to standard output; errors go to standard error with their\n"
    "line numbers, and the run goes on with the next form.\n"
    "\n"
    "Without a FILE, tavo reads forms from standard input: with a prompt on a\n"
    "terminal (one whole form at a time; forms may span lines), and without\n"
    "prompt or banner otherwise. The prompt edits lines, recalls earlier ones\n"
    "with the arrow keys, also those of former sessions (kept in\n"
    "~/.tavo_history), and completes function and construct names with Tab,\n"
    "when tavo is built with libedit. Ctrl-C at the prompt drops the form\n"
    "being typed; while forms run it halts the rules once the firing under way\n"
    "is done, and a second Ctrl-C ends tavo. Ctrl-D or (exit) leaves.\n"
    "\n"
    "Options:\n"
    "  --help              show this text and stop\n"
    "  -f FILE             batch FILE into the session first, then go on as\n"
    "                      without it: with the FILEs after the options, or\n"
    "                      else with the forms of standard input (so\n"
    "                      tavo -f kb.clp loads a knowledge base and gives the\n"
    "                      prompt)\n"
    "  --strategy=WAY      how activations of equal salience are ordered:\n"
    "                      depth (the newest first, the default) or breadth\n"
    "                      (the oldest first)\n"
    "  --salience=WHEN     when rules' salience expressions are evaluated:\n"
    "                      activation (as each activation is placed, the\n"
    "                      default) or every-cycle (also after each firing,\n"
    "                      when the agenda is sorted again)\n"
    "  --save=FILE         when the session ends, also by (exit), save its\n"
    "                      whole expert system to FILE as rule-language text\n"
    "                      that tavo FILE or (load) reads back\n"
    "  --dot-network=FILE  when the session ends, write the current module's\n"
    "                      Rete network to FILE as a Graphviz picture (dot\n"
    "                      -Tsvg FILE -o network.svg draws it)\n"
    "  --dot-agenda=FILE   when the session ends, write the focus stack and\n"
    "                      every module's agenda, in firing order, to FILE as\n"
    "                      a Graphviz picture\n"
    "  --crlf              write lines ended by CR LF, as the engine ends them;\n"
    "                      without it tavo writes LF in their place\n"
    "\n"
    "The exit status is 0 when every form ran, 1 when any failed, 2 for a\n"
    "file that cannot be read or written, or a bad option.\n";

// What the engine writes, to standard output and standard error.
TLineEndWriter Output(std::cout);
TLineEndWriter Errors(std::cerr);

void ReportError(const String& Message) {
  Output.Flush();
  Errors.Write(StringToUtf8(Message));
  Errors.Write("\n");
  Errors.Flush();
}

// Set once (exit) ran: nothing more is read.
bool Exiting = false;

// Ctrl-C at the prompt. While a line is edited it breaks the reading off;
// while forms run, the engine halts once the firing under way is done. A
// computation that fires no rule is not ended by a halt: a second Ctrl-C
// before the forms are done ends tavo as Ctrl-C would without the prompt.
std::atomic<bool> Interrupted{false};
std::atomic<bool> Evaluating{false};
static_assert(std::atomic<bool>::is_always_lock_free, "set from a signal handler");

extern "C" void OnInterrupt(int) {
  if (Interrupted.exchange(true) && Evaluating.load()) {
    signal(SIGINT, SIG_DFL);
    raise(SIGINT);
  }
}

// Reading a line must end at Ctrl-C, so that the line is dropped; while
// forms run, interrupted system calls start again, so that the forms'
// own reading and writing go on as if nothing had happened.
void CatchInterrupts(bool RestartCalls) {
  struct sigaction Action = {};
  Action.sa_handler = OnInterrupt;
  sigemptyset(&Action.sa_mask);
  Action.sa_flags = RestartCalls ? SA_RESTART : 0;
  sigaction(SIGINT, &Action, nullptr);
}

// The names Tab completes: every function the engine knows, built-in,
// host-given or deffunction, and the construct keywords.
std::vector<std::string> CompletionNames(TInferenceEngine& Engine) {
  std::vector<std::string> Names;
  for (const auto& Item : *Engine.GetUserFunctions()) Names.push_back(StringToUtf8(Item.Key));
  for (int Type = ptNone; Type <= ptEOF; ++Type)
    if (String Keyword = TTavoParser::GetConstructName(TParsedType(Type)); !Keyword.empty())
      Names.push_back(StringToUtf8(Keyword));
  return Names;
}

// The history file in the user's home directory; none without one.
std::string HistoryFile() {
  const char* Home = std::getenv("HOME");
  return Home && *Home ? std::string(Home) + "/.tavo_history" : std::string();
}

// The whole of a file, read in one piece of its size: no growing buffer,
// no copy. False, with a word on standard error, when it cannot be read.
bool ReadWholeFile(const std::string& File, std::string& Contents) {
  std::ifstream In(File, std::ios::binary);
  if (!In) {
    std::cerr << "tavo: cannot read " << File << "\n";
    return false;
  }
  In.seekg(0, std::ios::end);
  Contents.assign(size_t(std::max<std::streamoff>(In.tellg(), 0)), '\0');
  In.seekg(0, std::ios::beg);
  In.read(Contents.data(), std::streamsize(Contents.size()));
  Contents.resize(size_t(In.gcount()));
  return true;
}

// A picture's dot text into File, in UTF-8. False, with a word on
// standard error, when it cannot be written.
bool WritePicture(const std::string& File, const String& Picture) {
  std::ofstream Out(File, std::ios::binary);
  const std::string Text = StringToUtf8(Picture);
  if (Out) Out.write(Text.data(), std::streamsize(Text.size()));
  if (Out) Out.close();
  if (!Out) {
    std::cerr << "tavo: cannot write " << File << "\n";
    return false;
  }
  return true;
}

// Runs every top-level form of Text; true when all of them ran.
bool RunForms(TInferenceEngine& Engine, std::string Text) {
  auto* Parser = static_cast<TTavoParser*>(Engine.GetParserObject());
  TTavoClipsStream Stream(std::move(Text), teDefault, &Engine);
  Parser->SetStream(&Stream);
  bool Succeeded = true;
  for (;;) {
    try {
      if (!Parser->ParseExpression(true)) break;
    } catch (const EExit&) {
      Exiting = true;
      break;
    } catch (const EAbort&) {
      // Ends the form without a word.
      Parser->Clear();
    } catch (const ETavoParseException& E) {
      ReportError(E.Message());
      Succeeded = false;
      Parser->Clear();
    } catch (const EMekException& E) {
      int Line = Stream.GetCurrentToken()->GetLineNumber();
      ReportError(Format(SParseError, E.Message(), u"Parse", IntToStr(Line), Stream.ToString()));
      Succeeded = false;
      Parser->Clear();
    }
  }
  Parser->SetStream(nullptr);
  Output.Flush();
  return Succeeded;
}

bool RunPrompt(TInferenceEngine& Engine) {
  bool Succeeded = true;
  std::cout << "Tavo " << Engine.GetVersion() << "; forms are read as they are completed, (exit) or end of input leaves.\n";
  TLineEditor Editor(HistoryFile(), [&Engine] { return CompletionNames(Engine); });
  // What rules print shows as they print it, as a long run goes on.
  if (isatty(STDOUT_FILENO)) Output.SetFlushEachWrite(true);
  Engine.OnRuleFired = [&Engine](TObject*, TRule*) {
    if (Interrupted.load()) Engine.SetHalt(true);
  };
  std::string Pending, Line;
  for (;;) {
    Output.Flush();
    CatchInterrupts(false);
    const TLineRead Read = Editor.ReadLine(Pending.empty() ? "tavo> " : "  ...> ", Line);
    if (Read == lrEnd) break;
    // The form being typed is dropped. When the reading went on through
    // Ctrl-C, the terminal dropped the line's first part: the line read
    // begins the next form.
    if (Interrupted.exchange(false)) Pending.clear();
    if (Read == lrInterrupted) {
      std::cout << "\n";
      continue;
    }
    Pending += Line;
    Pending += '\n';
    if (!IsFormComplete(Utf8ToString(Pending))) continue;
    CatchInterrupts(true);
    Evaluating.store(true);
    Succeeded = RunForms(Engine, std::move(Pending)) && Succeeded;
    Evaluating.store(false);
    Interrupted.store(false);
    Pending.clear();
    if (Exiting) break;
  }
  signal(SIGINT, SIG_DFL);
  Engine.OnRuleFired = nullptr;
  std::cout << "\n";
  return Succeeded;
}

}  // namespace

int RunHost(int argc, char** argv) {
  std::ios::sync_with_stdio(false);
  std::vector<std::string> Files;
  // Batched first; standard input still follows when no FILE is given.
  std::vector<std::string> Batches;
  std::string SaveFile;
  std::string NetworkPicture;
  std::string AgendaPicture;
  TSearchStrategy Strategy = ssDepthFirst;
  TSalience EvalSalience = sActivate;
  for (int I = 1; I < argc; ++I) {
    std::string Argument = argv[I];
    if (Argument == "--help" || Argument == "-h") {
      std::cout << Usage;
      return 0;
    }
    if (Argument == "--crlf") {
      Output.SetKeepCrLf(true);
      Errors.SetKeepCrLf(true);
      continue;
    }
    const size_t Equals = Argument.find('=');
    const std::string Name = Argument.substr(0, Equals);
    if (Equals != std::string::npos && (Name == "--strategy" || Name == "--salience")) {
      const std::string Value = Argument.substr(Equals + 1);
      if (Name == "--strategy" && (Value == "depth" || Value == "breadth")) {
        Strategy = Value == "depth" ? ssDepthFirst : ssBreadthFirst;
      } else if (Name == "--salience" && (Value == "activation" || Value == "every-cycle")) {
        EvalSalience = Value == "activation" ? sActivate : sEveryTime;
      } else {
        std::cerr << "tavo: unknown value " << Value << " for " << Name << "\n" << Usage;
        return 2;
      }
      continue;
    }
    if ((Name == "--save" || Name == "--dot-network" || Name == "--dot-agenda") && Equals != std::string::npos &&
        Equals + 1 < Argument.size()) {
      (Name == "--save" ? SaveFile : Name == "--dot-network" ? NetworkPicture : AgendaPicture) =
          Argument.substr(Equals + 1);
      continue;
    }
    if (Argument == "-f") {
      if (I + 1 >= argc) {
        std::cerr << "tavo: -f needs a file\n" << Usage;
        return 2;
      }
      Batches.push_back(argv[++I]);
      continue;
    }
    if (Argument.size() > 1 && Argument[0] == '-') {
      std::cerr << "tavo: unknown option " << Argument << "\n" << Usage;
      return 2;
    }
    Files.push_back(Argument);
  }

  TInferenceEngine Engine;
  Engine.SetStrategy(Strategy);
  Engine.SetEvalSalience(EvalSalience);
  Engine.OnPrintOut = [](TObject*, const String&, const String& Text) { Output.Write(StringToUtf8(Text)); };
  // read and readline take their input from standard input, a line at a time.
  Engine.OnReadLine = [](TObject*, const String&, String& Text) {
    Output.Flush();
    std::string Line;
    if (std::getline(std::cin, Line)) {
      if (!Line.empty() && Line.back() == '\r') Line.pop_back();
      Text = Utf8ToString(Line);
    } else {
      // The end of input is reported as the end-of-file symbol's text.
      Text = FCEOF->GetText();
    }
  };
  Engine.OnReadToken = [&Engine](TObject*, const String&, IStreamToken& Token) {
    Output.Flush();
    std::string Line;
    std::getline(std::cin, Line);
    TTavoClipsStream Stream(std::move(Line), teDefault, &Engine);
    Token = Stream.NextToken();
  };

  bool Succeeded = true;
  for (const std::string& File : Batches) {
    if (Exiting) break;
    std::string Contents;
    if (!ReadWholeFile(File, Contents)) return 2;
    Succeeded = RunForms(Engine, std::move(Contents)) && Succeeded;
  }
  if (Files.empty() && !Exiting) {
    if (isatty(STDIN_FILENO)) {
      Succeeded = RunPrompt(Engine);
    } else {
      std::stringstream Input;
      Input << std::cin.rdbuf();
      Succeeded = RunForms(Engine, Input.str());
    }
  }
  for (const std::string& File : Files) {
    if (Exiting) break;
    std::string Contents;
    if (!ReadWholeFile(File, Contents)) return 2;
    Succeeded = RunForms(Engine, std::move(Contents)) && Succeeded;
  }
  Output.Flush();
  int Status = Succeeded ? 0 : 1;
  if (!SaveFile.empty()) {
    try {
      Engine.SaveToFile(Utf8ToString(SaveFile));
    } catch (const EMekException& E) {
      ReportError(E.Message());
      Status = 2;
    }
  }
  if (!NetworkPicture.empty() && !WritePicture(NetworkPicture, Engine.GetNetworkPicture())) Status = 2;
  if (!AgendaPicture.empty() && !WritePicture(AgendaPicture, Engine.GetAgendaPicture())) Status = 2;
#if defined(NDEBUG) && !defined(TAVO_ADDRESS_SANITIZER)
  // A release host leaves without taking the engine apart piece by piece:
  // the system takes the whole process back at once. Streams the engine
  // still holds, a capture among them, are closed by the teardown, which
  // then runs as usual; so do debug and sanitizer builds, so that their
  // tests check it.
  if (Engine.GetIOStreams()->Count() == 0 && !Engine.GetCapturing()) std::_Exit(Status);
#endif
  return Status;
}

namespace {

// Deep recursion in a knowledge base is legitimate; the engine runs on a
// thread with a large stack, of which only what is used is ever touched.
constexpr size_t HostStackSize = size_t(256) << 20;

// Ctrl-C goes to the engine's thread, whose reading at the prompt it must
// break off; the thread that waits for it blocks the signal.
void BlockInterrupts(bool Block) {
  sigset_t Signals;
  sigemptyset(&Signals);
  sigaddset(&Signals, SIGINT);
  pthread_sigmask(Block ? SIG_BLOCK : SIG_UNBLOCK, &Signals, nullptr);
}

struct THostRun {
  int argc;
  char** argv;
  int Status;
};

void* RunHostThread(void* Data) {
  BlockInterrupts(false);
  auto* Run = static_cast<THostRun*>(Data);
  Run->Status = RunHost(Run->argc, Run->argv);
  return nullptr;
}

}  // namespace

int main(int argc, char** argv) {
  // One heap for the engine's thread and this one, grown in large steps:
  // a knowledge base makes millions of small objects.
  mallopt(M_ARENA_MAX, 1);
  mallopt(M_TOP_PAD, 64 << 20);
  THostRun Run{argc, argv, 1};
  pthread_attr_t Attributes;
  pthread_t Thread;
  // The new thread starts with the signal blocked too, and unblocks it.
  BlockInterrupts(true);
  if (pthread_attr_init(&Attributes) == 0 && pthread_attr_setstacksize(&Attributes, HostStackSize) == 0 &&
      pthread_create(&Thread, &Attributes, RunHostThread, &Run) == 0) {
    pthread_attr_destroy(&Attributes);
    pthread_join(Thread, nullptr);
    return Run.Status;
  }
  // No such thread to be had: run with the stack there is.
  BlockInterrupts(false);
  return RunHost(argc, argv);
}
