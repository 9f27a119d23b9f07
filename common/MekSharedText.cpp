#include "common/MekSharedText.h"

#include <cstring>
#include <mutex>
#include <new>

#include "common/MekHashTables.h"

namespace tavo {

// The interned records by their text. A record leaves the table when its
// last reference goes; a look-up that finds a record on its way out treats
// it as absent and puts a new one in its place.
class TSharedTextTable {
 public:
  static TSharedTextTable& Instance() {
    // Never destroyed: values of other static objects may release texts
    // while the process ends.
    static TSharedTextTable* Table = new TSharedTextTable();
    return *Table;
  }

  TSharedText* Intern(StringView Text) {
    std::lock_guard<std::mutex> Lock(FLock);
    if (TSharedText* const* Found = FTexts.Find(Text)) {
      TSharedText* Record = *Found;
      int32_t Count = Record->FRefCount.load(std::memory_order_relaxed);
      // Revive only a record that is not being destroyed.
      while (Count > 0)
        if (Record->FRefCount.compare_exchange_weak(Count, Count + 1, std::memory_order_relaxed)) return Record;
      FTexts.Remove(Text);
    }
    TSharedText* Record = TSharedText::Allocate(Text, true);
    FTexts.Add(Record->View(), Record);
    return Record;
  }

  // The record is at count 0; it leaves the table unless a newer record of
  // the same text has taken its place.
  void Forget(const TSharedText* Record) {
    std::lock_guard<std::mutex> Lock(FLock);
    if (TSharedText* const* Found = FTexts.Find(Record->View()); Found && *Found == Record)
      FTexts.Remove(Record->View());
  }

 private:
  std::mutex FLock;
  TMekDictionary<StringView, TSharedText*, TMekDefaultComparer<String>> FTexts;
};

TSharedText::TSharedText(StringView Text, bool Interned)
    : FHash(CalculateHash(Text)), FLength(uint32_t(Text.size())), FInterned(Interned),
      FData(reinterpret_cast<const char16_t*>(this + 1)) {
  if (!Text.empty())
    std::memcpy(const_cast<char16_t*>(FData), Text.data(), Text.size() * sizeof(char16_t));
}

// The record and its code units share one block.
TSharedText* TSharedText::Allocate(StringView Text, bool Interned) {
  void* Block = ::operator new(sizeof(TSharedText) + Text.size() * sizeof(char16_t));
  return new (Block) TSharedText(Text, Interned);
}

void TSharedText::Destroy() const noexcept {
  if (FInterned) TSharedTextTable::Instance().Forget(this);
  this->~TSharedText();
  ::operator delete(const_cast<TSharedText*>(this));
}

TSharedText* TSharedText::Create(StringView Text) {
  if (Text.empty()) return Empty();
  return Allocate(Text, false);
}

TSharedText* TSharedText::Intern(StringView Text) {
  if (Text.empty()) return Empty();
  return TSharedTextTable::Instance().Intern(Text);
}

TSharedText* TSharedText::Empty() {
  static TSharedText* const Record = [] {
    TSharedText* Text = Allocate(StringView(), true);
    Text->FImmortal = true;
    return Text;
  }();
  return Record;
}

}  // namespace tavo
