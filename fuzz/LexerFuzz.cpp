// Feeds arbitrary bytes to the lexer and reads tokens to the end, stepping
// back and recovering now and then. The library's own exceptions are a
// legal answer to bad text; a crash, a hang or any other exception is not.
//
// The first byte steers the run: bits 0-1 the encoding asked for, bit 2 an
// engine as owner, bit 3 reading through a std::istream, bit 4 the
// encoding's byte-order mark ahead of the text, bits 5-7 the schedule of
// Head, PutBackToken, MoveToNextConstruct, DiscardUntilEOL and Clear.
#include <cstddef>
#include <cstdint>
#include <memory>
#include <sstream>
#include <string>

#include "common/MekExceptions.h"
#include "core/TavoValue.h"
#include "engine/InferenceEngine.h"
#include "language/TavoClipsStream.h"

using namespace tavo;

namespace {

TInferenceEngine& Engine() {
  static TInferenceEngine Instance;
  return Instance;
}

void Check(bool Condition) {
  if (!Condition) __builtin_trap();
}

void Run(TTavoClipsStream& Stream, uint32_t Seed, size_t Size) {
  // Enough steps for every byte to become a token several times over; the
  // schedule makes progress on average, the bound makes it certain.
  const size_t MaxSteps = 16 * Size + 64;
  for (size_t Step = 0; Step < MaxSteps; ++Step) {
    Seed ^= Seed << 13;
    Seed ^= Seed >> 17;
    Seed ^= Seed << 5;
    switch (Seed % 32) {
      case 0:
        Stream.Head();
        break;
      case 1:
        Stream.PutBackToken(Stream.GetCurrentToken());
        break;
      case 2:
        Stream.MoveToNextConstruct();
        break;
      case 3:
        Stream.DiscardUntilEOL();
        break;
      case 4:
        Stream.Clear();
        break;
      default:
        break;
    }
    IStreamToken Token = Stream.NextToken();
    Check(bool(Token));
    Token->ToString();
    Token->Value();
    Stream.ToString();
    if (Token->GetDataType() == 0) {
      // The end stays the end.
      Check(Stream.NextToken()->GetDataType() == 0);
      return;
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* Data, size_t Size) {
  const uint8_t Control = Size > 0 ? Data[0] : 0;
  std::string Bytes(reinterpret_cast<const char*>(Data) + (Size > 0 ? 1 : 0), Size > 0 ? Size - 1 : 0);
  const auto Encoding = TTextEncoding(Control & 3);
  if (Control & 16) Bytes = GetPreamble(Encoding) + Bytes;
  TInferenceEngine* Owner = (Control & 4) ? &Engine() : nullptr;
  const uint32_t Seed = 0x9E3779B9u ^ (uint32_t(Control >> 5) * 0x85EBCA6Bu) ^ uint32_t(Size);
  try {
    if (Control & 8) {
      std::istringstream Source(Bytes);
      TTavoClipsStream Stream(Source, Encoding, Owner);
      Run(Stream, Seed, Bytes.size());
    } else {
      TTavoClipsStream Stream(Bytes, Encoding, Owner);
      Run(Stream, Seed, Bytes.size());
    }
  } catch (const EMekException&) {
    // ETavoException and ETavoParseException derive from it.
  }
  return 0;
}
