// The prompt's line reader, over libedit when the host is built with it.
#include "tools/LineEditor.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <iostream>

#ifdef TAVO_HAVE_LIBEDIT
#include <histedit.h>

#include <clocale>

#include "tools/Completion.h"
#endif

namespace tavo {

#ifdef TAVO_HAVE_LIBEDIT

struct TLineEditor::TEditor {
  EditLine* Edit = nullptr;
  History* Lines = nullptr;
  std::string HistoryFile;
  TNameSource Names;
  const char* Prompt = "";

  TEditor(const std::string& File, TNameSource Source) : HistoryFile(File), Names(std::move(Source)) {
    // libedit reads characters as the locale encodes them; only the
    // character type is taken from the environment, so numbers keep
    // printing as they do everywhere else.
    std::setlocale(LC_CTYPE, "");
    HistEvent Event;
    Lines = history_init();
    if (!Lines) return;
    history(Lines, &Event, H_SETSIZE, HistorySize);
    history(Lines, &Event, H_SETUNIQUE, 1);
    if (!HistoryFile.empty()) history(Lines, &Event, H_LOAD, HistoryFile.c_str());
    Edit = el_init("tavo", stdin, stdout, stderr);
    if (!Edit) return;
    el_set(Edit, EL_CLIENTDATA, this);
    el_set(Edit, EL_PROMPT, &TEditor::PromptOf);
    el_set(Edit, EL_EDITOR, "emacs");
    el_set(Edit, EL_HIST, history, Lines);
    // The wide form keeps the two texts as they are; the narrow one makes
    // copies that libedit never frees.
    el_wset(Edit, EL_ADDFN, L"tavo-complete", L"Complete a function or construct name", &TEditor::CompleteWord);
    el_set(Edit, EL_BIND, "^I", "tavo-complete", nullptr);
    // The user's ~/.editrc comes last, so that it may bind keys otherwise.
    el_source(Edit, nullptr);
  }

  ~TEditor() {
    if (Edit) el_end(Edit);
    if (Lines) history_end(Lines);
  }

  static TEditor& Of(EditLine* Edit) {
    void* Data = nullptr;
    el_get(Edit, EL_CLIENTDATA, &Data);
    return *static_cast<TEditor*>(Data);
  }

  static char* PromptOf(EditLine* Edit) { return const_cast<char*>(Of(Edit).Prompt); }

  static unsigned char CompleteWord(EditLine* Edit, int) {
    const LineInfo* Info = el_line(Edit);
    const std::string_view Line(Info->buffer, size_t(Info->lastchar - Info->buffer));
    const std::string_view Word = WordBefore(Line, size_t(Info->cursor - Info->buffer));
    // Without a word Tab indents, as in a form typed over several lines.
    if (Word.empty()) return el_insertstr(Edit, "\t") == 0 ? CC_REFRESH : CC_ERROR;
    const TCompletion Completion = Complete(Word, Of(Edit).Names());
    if (!Completion.Insert.empty()) return el_insertstr(Edit, Completion.Insert.c_str()) == 0 ? CC_REFRESH : CC_ERROR;
    if (Completion.Matches.size() < 2) return CC_ERROR;
    ListNames(Edit, Completion.Matches);
    return CC_REDISPLAY;
  }

  // The names below the line, in as many columns as the terminal is wide.
  static void ListNames(EditLine* Edit, const std::vector<std::string>& Names) {
    int Width = 80;
    if (el_get(Edit, EL_GETTC, "co", &Width) != 0 || Width <= 0) Width = 80;
    size_t Longest = 0;
    for (const std::string& Name : Names) Longest = std::max(Longest, Name.size());
    const size_t Column = Longest + 2;
    const size_t Columns = std::max<size_t>(1, size_t(Width) / Column);
    std::fputc('\n', stdout);
    for (size_t I = 0; I < Names.size(); ++I) {
      std::fputs(Names[I].c_str(), stdout);
      if ((I + 1) % Columns == 0 || I + 1 == Names.size())
        std::fputc('\n', stdout);
      else
        for (size_t Filled = Names[I].size(); Filled < Column; ++Filled) std::fputc(' ', stdout);
    }
    std::fflush(stdout);
  }

  void Remember(const std::string& Line) {
    if (Line.find_first_not_of(" \t\r") == std::string::npos) return;
    HistEvent Event;
    history(Lines, &Event, H_ENTER, Line.c_str());
    if (HistoryFile.empty()) return;
    // Lines typed may be private: a history file made here is its owner's alone.
    const int File = open(HistoryFile.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
    if (File >= 0) close(File);
    history(Lines, &Event, H_SAVE, HistoryFile.c_str());
  }
};

TLineEditor::TLineEditor(const std::string& HistoryFile, TNameSource Names) {
  // Edited lines are shown on standard output: both must be the terminal.
  if (isatty(STDIN_FILENO) && isatty(STDOUT_FILENO))
    FEditor = std::make_unique<TEditor>(HistoryFile, std::move(Names));
  // Without an editor to be had the lines are read as they come.
  if (FEditor && !FEditor->Edit) FEditor.reset();
}

#else

struct TLineEditor::TEditor {};

TLineEditor::TLineEditor(const std::string&, TNameSource) {}

#endif

TLineEditor::~TLineEditor() = default;

TLineRead TLineEditor::ReadLine(const char* Prompt, std::string& Line) {
#ifdef TAVO_HAVE_LIBEDIT
  if (FEditor) {
    FEditor->Prompt = Prompt;
    // The terminal may have changed its size since the last line.
    el_resize(FEditor->Edit);
    int Count = 0;
    errno = 0;
    const char* Text = el_gets(FEditor->Edit, &Count);
    if (!Text) return Count < 0 && errno == EINTR ? lrInterrupted : lrEnd;
    // Count is in characters on some versions of libedit, in bytes on
    // others: the text ends at its NUL either way.
    Line = Text;
    while (!Line.empty() && (Line.back() == '\n' || Line.back() == '\r')) Line.pop_back();
    FEditor->Remember(Line);
    return lrLine;
  }
#endif
  std::cout << Prompt << std::flush;
  return std::getline(std::cin, Line) ? lrLine : lrEnd;
}

}  // namespace tavo
