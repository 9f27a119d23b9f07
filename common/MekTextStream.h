// Text streams: 16-bit text read from and written to bytes in a chosen
// encoding, with character put-back and a line reader.
#pragma once

#include <cstdint>
#include <ios>
#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

#include "MekObjects.h"
#include "MekStrings.h"

namespace tavo {

// teDefault means UTF-8.
enum TTextEncoding { teDefault, teUTF8, teUTF16LE, teUTF16BE };

// The byte-order mark of an encoding: EF BB BF, FF FE or FE FF.
std::string GetPreamble(TTextEncoding Encoding);
// Lone surrogates become U+FFFD in UTF-8; UTF-16 keeps the code units as
// they are.
std::string EncodeText(StringView Text, TTextEncoding Encoding);
void WriteStringToStream(std::ostream& Stream, StringView Text, TTextEncoding Encoding);
void WritePreambleToStream(std::ostream& Stream, TTextEncoding Encoding);
// The file in Mode, always binary; one that cannot be opened raises
// SFileOpenError with the system's reason.
std::unique_ptr<std::fstream> OpenFileStream(const String& FileName, std::ios::openmode Mode);

// Reads 16-bit code units from a byte source. A leading byte-order mark
// selects UTF-8, UTF-16LE or UTF-16BE whatever encoding was asked for, and
// is skipped. Ill-formed UTF-8 gives one U+FFFD per bad sequence, an odd
// last byte of UTF-16 gives U+FFFD; code points above U+FFFF come out as
// surrogate pairs, one unit per read.
class TGTextStream : public TObject {
  TAVO_CLASS(TGTextStream, TObject)
 public:
  // Reads from Source, which the stream does not own and which must outlive it.
  explicit TGTextStream(std::istream& Source, TTextEncoding Encoding = teDefault);
  // Reads from bytes of its own.
  explicit TGTextStream(std::string Bytes, TTextEncoding Encoding = teDefault);
  // Reads the text itself (held as UTF-8).
  explicit TGTextStream(const String& Text);
  TGTextStream(const TGTextStream&) = delete;
  TGTextStream& operator=(const TGTextStream&) = delete;

  // The next code unit, or 0 at the end.
  virtual char16_t GetChar();
  // False at the end; unlike GetChar() it tells a NUL in the text from the end.
  bool GetChar(char16_t& C);
  // The rest of the line without its line end; CR, LF and CR LF each end a
  // line. Empty at the end.
  virtual String GetLine();
  // The next read gives C again. Put-backs stack: the last one comes first.
  virtual void PutBack(char16_t C);
  // Skips blanks (every code unit up to U+0020) up to and including one
  // line end; true when it passed a line end.
  virtual bool SkipInLineSpaces();
  // True when no character is left, put-backs included.
  bool IsEof();
  // The encoding in use, once a byte-order mark has had its say.
  TTextEncoding GetEncoding();

  // The writing side, for a stream that is also written to: text goes to
  // Output in the stream's encoding. Put on a stream without one raises.
  void SetOutput(std::ostream* Output, TTextEncoding Encoding = teDefault) {
    FOutput = Output;
    FOutputEncoding = Encoding;
  }
  virtual void Put(StringView Text);

 private:
  std::ostream* FOutput = nullptr;
  TTextEncoding FOutputEncoding = teDefault;
  int ReadByte();
  int PeekByte();
  void Start();
  bool ReadUnit(char16_t& C);
  char16_t DecodeUtf8(uint8_t Lead);

  std::streambuf* FSource = nullptr;
  std::string FBytes;
  size_t FPosition = 0;
  TTextEncoding FEncoding;
  bool FStarted = false;
  // Low half of a surrogate pair whose high half was handed out.
  char16_t FPendingLow = 0;
  std::vector<char16_t> FPutBacks;
};

// Writes 16-bit text as bytes of an encoding, to a stream it does not own
// or to a buffer of its own. Each write is encoded on its own, so a
// surrogate pair split between two writes becomes two U+FFFD in UTF-8.
class TGTextWriter : public TObject {
  TAVO_CLASS(TGTextWriter, TObject)
 public:
  explicit TGTextWriter(std::ostream& Target, TTextEncoding Encoding = teDefault);
  explicit TGTextWriter(TTextEncoding Encoding = teDefault);
  TGTextWriter(const TGTextWriter&) = delete;
  TGTextWriter& operator=(const TGTextWriter&) = delete;

  void WritePreamble();
  void Write(StringView Text);
  TTextEncoding GetEncoding() const { return FEncoding; }
  // What was written to the writer's own buffer; empty over a stream.
  const std::string& GetBytes() const { return FBytes; }

 private:
  void Put(const std::string& Bytes);

  std::ostream* FTarget = nullptr;
  std::string FBytes;
  TTextEncoding FEncoding;
};

// The characters that may begin a number: digits, signs, the decimal point,
// and '$' of hexadecimal. This choice is ours; the number conversions decide
// whether the word really is one.
inline bool IsNumberChar(char16_t C) {
  return (C >= u'0' && C <= u'9') || C == u'+' || C == u'-' || C == u'.' || C == u'$';
}

// Number characters that are no number when they stand alone, so that a
// lone "-" or "$" stays a symbol. Also our choice.
inline bool IsNumberSymbol(char16_t C) { return C == u'+' || C == u'-' || C == u'.' || C == u'$'; }

}  // namespace tavo
