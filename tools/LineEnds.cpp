// Line ends of the host's output.
#include "tools/LineEnds.h"

namespace tavo {

void TLineEndWriter::Write(std::string_view Text) {
  WriteText(Text);
  if (FFlushEachWrite) FOut.flush();
}

void TLineEndWriter::WriteText(std::string_view Text) {
  if (FKeepCrLf) {
    FOut << Text;
    return;
  }
  if (Text.empty()) return;
  if (FHeldCR) {
    FHeldCR = false;
    if (Text.front() != '\n') FOut.put('\r');
  }
  size_t Start = 0;
  for (size_t CR = Text.find('\r'); CR != std::string_view::npos; CR = Text.find('\r', CR + 1)) {
    if (CR + 1 == Text.size()) {
      FHeldCR = true;
      FOut << Text.substr(Start, CR - Start);
      return;
    }
    if (Text[CR + 1] == '\n') {
      FOut << Text.substr(Start, CR - Start);
      Start = CR + 1;
    }
  }
  FOut << Text.substr(Start);
}

void TLineEndWriter::Flush() {
  if (FHeldCR) FOut.put('\r');
  FHeldCR = false;
  FOut.flush();
}

}  // namespace tavo
