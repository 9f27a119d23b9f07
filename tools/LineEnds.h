// The engine ends its lines with CR LF wherever it runs. The host writes
// them as LF, as the tools its output is piped into expect on this
// platform, unless it is asked for the engine's own bytes.
#pragma once

#include <ostream>
#include <string_view>

namespace tavo {

class TLineEndWriter {
 public:
  explicit TLineEndWriter(std::ostream& Out) : FOut(Out) {}

  void SetKeepCrLf(bool Value) { FKeepCrLf = Value; }
  // Each text goes out at once, a CR held back aside.
  void SetFlushEachWrite(bool Value) { FFlushEachWrite = Value; }
  // Writes Text with each CR LF as LF. A CR that ends Text is held back
  // until the next text or Flush shows whether an LF follows it.
  void Write(std::string_view Text);
  // Writes a CR held back, then flushes the stream.
  void Flush();

 private:
  void WriteText(std::string_view Text);

  std::ostream& FOut;
  bool FKeepCrLf = false;
  bool FFlushEachWrite = false;
  bool FHeldCR = false;
};

}  // namespace tavo
