#include "MekTextStream.h"

#include "MekExceptions.h"
#include "MekFormat.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <istream>
#include <ostream>

namespace tavo {

namespace {

constexpr char16_t ReplacementChar = 0xFFFD;
constexpr char16_t CR = u'\r';
constexpr char16_t LF = u'\n';

void AppendUnit(std::string& Out, char16_t Unit, bool BigEndian) {
  const char High = char(Unit >> 8), Low = char(Unit & 0xFF);
  if (BigEndian) {
    Out += High;
    Out += Low;
  } else {
    Out += Low;
    Out += High;
  }
}

}  // namespace

std::string GetPreamble(TTextEncoding Encoding) {
  switch (Encoding) {
    case teUTF16LE:
      return "\xFF\xFE";
    case teUTF16BE:
      return "\xFE\xFF";
    default:
      return "\xEF\xBB\xBF";
  }
}

std::string EncodeText(StringView Text, TTextEncoding Encoding) {
  if (Encoding != teUTF16LE && Encoding != teUTF16BE) return StringToUtf8(Text);
  std::string Out;
  Out.reserve(Text.size() * 2);
  for (char16_t Unit : Text) AppendUnit(Out, Unit, Encoding == teUTF16BE);
  return Out;
}

void WriteStringToStream(std::ostream& Stream, StringView Text, TTextEncoding Encoding) {
  const std::string Bytes = EncodeText(Text, Encoding);
  Stream.write(Bytes.data(), std::streamsize(Bytes.size()));
}

void WritePreambleToStream(std::ostream& Stream, TTextEncoding Encoding) {
  const std::string Bytes = GetPreamble(Encoding);
  Stream.write(Bytes.data(), std::streamsize(Bytes.size()));
}

std::unique_ptr<std::fstream> OpenFileStream(const String& FileName, std::ios::openmode Mode) {
  errno = 0;
  auto File = std::make_unique<std::fstream>(StringToUtf8(FileName), Mode | std::ios::binary);
  if (!File->is_open()) throw EMekException(Format(SFileOpenError, FileName, Utf8ToString(std::strerror(errno))));
  return File;
}

// Reading.

TGTextStream::TGTextStream(std::istream& Source, TTextEncoding Encoding)
    : FSource(Source.rdbuf()), FEncoding(Encoding) {}

TGTextStream::TGTextStream(std::string Bytes, TTextEncoding Encoding)
    : FBytes(std::move(Bytes)), FEncoding(Encoding) {}

TGTextStream::TGTextStream(const String& Text) : FBytes(StringToUtf8(Text)), FEncoding(teUTF8) {}

// The owned bytes come first; over a stream they hold only the bytes that
// the search for a byte-order mark looked at.
int TGTextStream::ReadByte() {
  if (FPosition < FBytes.size()) return uint8_t(FBytes[FPosition++]);
  if (!FSource) return -1;
  const auto B = FSource->sbumpc();
  return B == std::char_traits<char>::eof() ? -1 : int(uint8_t(B));
}

int TGTextStream::PeekByte() {
  if (FPosition < FBytes.size()) return uint8_t(FBytes[FPosition]);
  if (!FSource) return -1;
  const auto B = FSource->sgetc();
  return B == std::char_traits<char>::eof() ? -1 : int(uint8_t(B));
}

void TGTextStream::Start() {
  if (FStarted) return;
  FStarted = true;
  if (FSource) {
    // Move the leading bytes that could be a mark into the own buffer, no
    // more than needed, so that an interactive source is not waited on.
    FBytes.clear();
    FPosition = 0;
    auto Take = [this] {
      const auto B = FSource->sbumpc();
      if (B == std::char_traits<char>::eof()) return -1;
      FBytes += char(B);
      return int(uint8_t(B));
    };
    const int First = Take();
    if (First == 0xFF || First == 0xFE)
      Take();
    else if (First == 0xEF && Take() == 0xBB)
      Take();
  }
  const std::string_view Head(FBytes.data() + FPosition, FBytes.size() - FPosition);
  if (Head.starts_with("\xEF\xBB\xBF")) {
    FEncoding = teUTF8;
    FPosition += 3;
  } else if (Head.starts_with("\xFF\xFE")) {
    FEncoding = teUTF16LE;
    FPosition += 2;
  } else if (Head.starts_with("\xFE\xFF")) {
    FEncoding = teUTF16BE;
    FPosition += 2;
  } else if (FEncoding == teDefault) {
    FEncoding = teUTF8;
  }
}

TTextEncoding TGTextStream::GetEncoding() {
  Start();
  return FEncoding;
}

char16_t TGTextStream::DecodeUtf8(uint8_t Lead) {
  uint32_t Code = DecodeUtf8Sequence(Lead, [this] { return PeekByte(); }, [this] { ReadByte(); });
  if (Code < 0x10000) return char16_t(Code);
  Code -= 0x10000;
  FPendingLow = char16_t(0xDC00 + (Code & 0x3FF));
  return char16_t(0xD800 + (Code >> 10));
}

bool TGTextStream::ReadUnit(char16_t& C) {
  if (!FPutBacks.empty()) {
    C = FPutBacks.back();
    FPutBacks.pop_back();
    return true;
  }
  if (FPendingLow) {
    C = FPendingLow;
    FPendingLow = 0;
    return true;
  }
  Start();
  const int First = ReadByte();
  if (First < 0) return false;
  if (FEncoding == teUTF16LE || FEncoding == teUTF16BE) {
    const int Second = ReadByte();
    if (Second < 0)
      C = ReplacementChar;
    else
      C = FEncoding == teUTF16LE ? char16_t(First | (Second << 8)) : char16_t((First << 8) | Second);
  } else {
    C = DecodeUtf8(uint8_t(First));
  }
  return true;
}

char16_t TGTextStream::GetChar() {
  char16_t C;
  return ReadUnit(C) ? C : char16_t(0);
}

bool TGTextStream::GetChar(char16_t& C) {
  if (IsEof()) {
    C = 0;
    return false;
  }
  C = GetChar();
  return true;
}

bool TGTextStream::IsEof() {
  if (!FPutBacks.empty() || FPendingLow) return false;
  Start();
  return PeekByte() < 0;
}

void TGTextStream::PutBack(char16_t C) { FPutBacks.push_back(C); }

// Reads through the virtual GetChar and PutBack, so that a stream that
// counts lines sees the line end.
String TGTextStream::GetLine() {
  String Line;
  char16_t C;
  while (GetChar(C)) {
    if (C == LF) break;
    if (C == CR) {
      char16_t Next;
      if (GetChar(Next) && Next != LF) PutBack(Next);
      break;
    }
    Line += C;
  }
  return Line;
}

bool TGTextStream::SkipInLineSpaces() {
  char16_t C;
  while (GetChar(C)) {
    if (C > u' ') {
      PutBack(C);
      return false;
    }
    if (C == LF) return true;
    if (C == CR) {
      char16_t Next;
      if (GetChar(Next) && Next != LF) PutBack(Next);
      return true;
    }
  }
  return false;
}

// Writing.

TGTextWriter::TGTextWriter(std::ostream& Target, TTextEncoding Encoding)
    : FTarget(&Target), FEncoding(Encoding) {}

TGTextWriter::TGTextWriter(TTextEncoding Encoding) : FEncoding(Encoding) {}

void TGTextWriter::Put(const std::string& Bytes) {
  if (FTarget)
    FTarget->write(Bytes.data(), std::streamsize(Bytes.size()));
  else
    FBytes += Bytes;
}

void TGTextWriter::WritePreamble() { Put(GetPreamble(FEncoding)); }

void TGTextWriter::Write(StringView Text) { Put(EncodeText(Text, FEncoding)); }

void TGTextStream::Put(StringView Text) {
  if (!FOutput) throw EMekException(SStreamNotWritable);
  WriteStringToStream(*FOutput, Text, FOutputEncoding);
}

}  // namespace tavo
