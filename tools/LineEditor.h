// The prompt's line reader. With libedit, on a terminal, lines are edited
// in place, kept in a history that outlives the session, and completed with
// Tab; otherwise they are read from standard input as they come.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace tavo {

enum TLineRead { lrLine, lrInterrupted, lrEnd };

class TLineEditor {
 public:
  // The words Tab completes, in any order.
  using TNameSource = std::function<std::vector<std::string>()>;
  // The history keeps this many lines, the file as well.
  static constexpr int HistorySize = 1000;

  // HistoryFile, unless empty, is read now and written again after each
  // line entered.
  TLineEditor(const std::string& HistoryFile, TNameSource Names);
  ~TLineEditor();
  TLineEditor(const TLineEditor&) = delete;
  TLineEditor& operator=(const TLineEditor&) = delete;

  // Shows Prompt and reads one line into Line, without its line end.
  // lrInterrupted when a signal (Ctrl-C) broke off the line being edited,
  // which is dropped; lrEnd at the end of input.
  TLineRead ReadLine(const char* Prompt, std::string& Line);

 private:
  struct TEditor;
  std::unique_ptr<TEditor> FEditor;
};

}  // namespace tavo
