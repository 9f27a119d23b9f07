#include "MekStringList.h"

namespace tavo {

void TStrings::BeginUpdate() {
  if (FUpdateCount == 0) SetUpdateState(true);
  ++FUpdateCount;
}

void TStrings::EndUpdate() {
  if (FUpdateCount == 0) return;
  if (--FUpdateCount == 0) SetUpdateState(false);
}

void TStrings::SetUpdateState(bool Updating) {
  if (Updating)
    Changing();
  else
    Changed();
}

void TStrings::Changing() {
  if (FUpdateCount == 0 && OnChanging) OnChanging(this);
}

void TStrings::Changed() {
  if (FUpdateCount == 0 && OnChange) OnChange(this);
}

String TStrings::GetText() const {
  const int N = Count();
  size_t Length = 0;
  for (int I = 0; I < N; ++I) Length += Get(I).size() + 2;
  String Text;
  Text.reserve(Length);
  for (int I = 0; I < N; ++I) {
    Text += Get(I);
    Text += u"\r\n";
  }
  return Text;
}

void TStrings::SetText(StringView Text) {
  BeginUpdate();
  try {
    Clear();
    size_t Start = 0;
    const size_t N = Text.size();
    while (Start < N) {
      size_t End = Start;
      while (End < N && Text[End] != u'\r' && Text[End] != u'\n') ++End;
      Add(String(Text.substr(Start, End - Start)));
      if (End < N && Text[End] == u'\r') ++End;
      if (End < N && Text[End] == u'\n') ++End;
      Start = End;
    }
  } catch (...) {
    EndUpdate();
    throw;
  }
  EndUpdate();
}

}  // namespace tavo
