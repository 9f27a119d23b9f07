// Immutable, counted text records. Values hold their text through one of
// these instead of a string of their own, so that copying a value copies a
// pointer, a hash is computed once per text, and two interned texts are
// equal exactly when they are the same record.
#pragma once

#include <atomic>
#include <cstdint>
#include <utility>

#include "common/MekStrings.h"

namespace tavo {

class TSharedText {
 public:
  TSharedText(const TSharedText&) = delete;
  TSharedText& operator=(const TSharedText&) = delete;

  // A new record of its own.
  static TSharedText* Create(StringView Text);
  // The one record of this text among interned ones; made when absent.
  static TSharedText* Intern(StringView Text);
  // The interned empty text, which lives as long as the process.
  static TSharedText* Empty();

  StringView View() const { return StringView(FData, FLength); }
  const char16_t* Data() const { return FData; }
  uint32_t Length() const { return FLength; }
  bool IsEmpty() const { return FLength == 0; }
  // CalculateHash of the text, computed when the record is made.
  int32_t Hash() const { return FHash; }
  bool IsInterned() const { return FInterned; }

  void AddReference() const noexcept {
    if (!FImmortal) FRefCount.fetch_add(1, std::memory_order_relaxed);
  }
  void ReleaseReference() const noexcept {
    if (!FImmortal && FRefCount.fetch_sub(1, std::memory_order_acq_rel) == 1) Destroy();
  }

  // Same text. Two interned records are equal only when they are one.
  static bool Same(const TSharedText* A, const TSharedText* B) noexcept {
    if (A == B) return true;
    if ((A->FInterned && B->FInterned) || A->FHash != B->FHash || A->FLength != B->FLength) return false;
    return A->View() == B->View();
  }

 private:
  friend class TSharedTextTable;
  TSharedText(StringView Text, bool Interned);
  ~TSharedText() = default;
  static TSharedText* Allocate(StringView Text, bool Interned);
  void Destroy() const noexcept;

  mutable std::atomic<int32_t> FRefCount{1};
  int32_t FHash;
  uint32_t FLength;
  bool FInterned;
  bool FImmortal = false;
  const char16_t* FData;
};

// A counted handle on a shared text; null means no text.
class TSharedTextRef {
 public:
  TSharedTextRef() noexcept = default;
  // Adopts a record that already holds a reference for the handle.
  static TSharedTextRef Adopt(TSharedText* Text) noexcept {
    TSharedTextRef Result;
    Result.FText = Text;
    return Result;
  }
  TSharedTextRef(const TSharedTextRef& Other) noexcept : FText(Other.FText) {
    if (FText) FText->AddReference();
  }
  TSharedTextRef(TSharedTextRef&& Other) noexcept : FText(std::exchange(Other.FText, nullptr)) {}
  ~TSharedTextRef() {
    if (FText) FText->ReleaseReference();
  }
  TSharedTextRef& operator=(TSharedTextRef Other) noexcept {
    std::swap(FText, Other.FText);
    return *this;
  }
  TSharedText* Get() const noexcept { return FText; }
  StringView View() const noexcept { return FText ? FText->View() : StringView(); }
  explicit operator bool() const noexcept { return FText != nullptr; }

 private:
  TSharedText* FText = nullptr;
};

}  // namespace tavo
