// Object model of the common layer: class references, persistent objects,
// counted objects with TRef, the owner component and the cloneable base that
// every shared object of the engine derives from.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <type_traits>
#include <typeinfo>
#include <utility>
#include <vector>

#include "MekSet.h"
#include "MekStrings.h"

namespace tavo {

class TObject;

// A plain notification with its sender.
using TNotifyEvent = std::function<void(TObject* Sender)>;

// A class reference: the run-time description of a class, with the means to
// make a new instance of it (null for abstract classes and classes that need
// constructor arguments).
struct TClass {
  const char16_t* Name;
  const TClass* Parent;
  TObject* (*Create)();

  bool InheritsFrom(const TClass& Other) const;
};

template <class T>
struct TClassFactory {
  static TObject* Create() {
    if constexpr (std::is_default_constructible_v<T> && !std::is_abstract_v<T>)
      return new T();
    else
      return nullptr;
  }
};

// Declares the class reference of a class; put it first in the class body.
#define TAVO_CLASS(ClassName, ParentName)                                              \
 public:                                                                               \
  static const ::tavo::TClass& StaticClass() {                                         \
    static const ::tavo::TClass Class{u"" #ClassName, &ParentName::StaticClass(),      \
                                      &::tavo::TClassFactory<ClassName>::Create};      \
    return Class;                                                                      \
  }                                                                                    \
  const ::tavo::TClass& ClassType() const override { return StaticClass(); }          \
                                                                                       \
 private:

// Root of every class that a value can hold as an object.
class TObject {
 public:
  virtual ~TObject() = default;

  static const TClass& StaticClass();
  virtual const TClass& ClassType() const { return StaticClass(); }
  String ClassName() const { return ClassType().Name; }
  bool InheritsFrom(const TClass& Class) const { return ClassType().InheritsFrom(Class); }

  // Runs once the object is fully constructed (see Make); virtual calls are
  // safe here, unlike in a constructor.
  virtual void AfterConstruction() {}
  // The object's text; the class name unless a class says otherwise.
  virtual String ToString() const { return ClassName(); }
};

// An object that can copy itself from another by Assign.
class TPersistent : public TObject {
  TAVO_CLASS(TPersistent, TObject)
 public:
  // Copies Source into this object; the default asks Source to AssignTo.
  virtual void Assign(const TPersistent* Source);
  // Copies this object into Dest; the default raises.
  virtual void AssignTo(TPersistent* Dest) const;

 protected:
  [[noreturn]] void AssignError(const TPersistent* Source) const;
};

// Adds an atomic reference count to Base; the object deletes itself when the
// last TRef lets go. The count's operations have names of their own, apart
// from the Release that some engine objects offer for freeing their contents.
template <class Base>
class TCounted : public Base {
 public:
  using Base::Base;

  // An immortal object is never counted: its count is negative for good.
  // The plain load first keeps shared constants free of atomic traffic.
  void AddReference() const noexcept {
    if (FRefCount.load(std::memory_order_relaxed) >= 0) FRefCount.fetch_add(1, std::memory_order_relaxed);
  }
  // The last reference needs no atomic step: with the count at one, no
  // other holder exists that could take another.
  void ReleaseReference() const noexcept {
    const int32_t Count = FRefCount.load(std::memory_order_acquire);
    if (Count == 1 || (Count > 0 && FRefCount.fetch_sub(1, std::memory_order_acq_rel) == 1)) delete this;
  }
  // The same two for an object that only the thread driving its owner may
  // touch, one thread at a time under the owner's lock: no atomic step.
  void AddReferenceConfined() const noexcept {
    const int32_t Count = FRefCount.load(std::memory_order_relaxed);
    if (Count >= 0) FRefCount.store(Count + 1, std::memory_order_relaxed);
  }
  void ReleaseReferenceConfined() const noexcept {
    const int32_t Count = FRefCount.load(std::memory_order_relaxed);
    if (Count == 1)
      delete this;
    else if (Count > 0)
      FRefCount.store(Count - 1, std::memory_order_relaxed);
  }
  // The first reference to an object that no other thread can see yet.
  void AdoptFirstReference() const noexcept {
    if (FRefCount.load(std::memory_order_relaxed) == 0)
      FRefCount.store(1, std::memory_order_relaxed);
    else
      AddReference();
  }
  int32_t RefCount() const noexcept { return FRefCount.load(std::memory_order_relaxed); }
  // Makes the object live as long as the process: no reference counts it
  // or frees it from now on.
  void MakeImmortal() const noexcept { FRefCount.store(ImmortalCount, std::memory_order_relaxed); }
  bool IsImmortal() const noexcept { return FRefCount.load(std::memory_order_relaxed) < 0; }

 private:
  static constexpr int32_t ImmortalCount = INT32_MIN / 2;
  mutable std::atomic<int32_t> FRefCount{0};
};

using TCountedObject = TCounted<TObject>;

// dynamic_cast<T*> for a cast made again and again on objects of one
// dynamic type, as an interface of the engine taken from its owner: the
// offset found for the last dynamic type serves while the type stays the
// same, which is exact, since one dynamic type places its bases at one
// offset. A cast across the bases of a class with several of them otherwise
// compares type names on every call.
template <class T, class S>
T* RepeatedCast(S* Object) {
  struct TLast {
    const std::type_info* Type = nullptr;
    std::ptrdiff_t Offset = 0;
    bool Fails = false;
  };
  static thread_local TLast Last;
  if (!Object) return nullptr;
  const std::type_info& Type = typeid(*Object);
  if (&Type != Last.Type) {
    T* Result = dynamic_cast<T*>(Object);
    Last.Type = &Type;
    Last.Fails = !Result;
    Last.Offset = Result ? reinterpret_cast<const char*>(Result) - reinterpret_cast<const char*>(Object) : 0;
    return Result;
  }
  if (Last.Fails) return nullptr;
  return reinterpret_cast<T*>(const_cast<char*>(reinterpret_cast<const char*>(Object)) + Last.Offset);
}

// TRef counts through these, found by argument-dependent lookup. A class that
// must be held while it is still incomplete (a lower layer holding an object
// of a higher one) declares its own two overloads next to its forward
// declaration and defines them where the class is complete.
template <class T>
inline void TavoAddReference(const T* Object) noexcept {
  Object->AddReference();
}
template <class T>
inline void TavoReleaseReference(const T* Object) noexcept {
  Object->ReleaseReference();
}

// The counted reference. Each I name of the engine is one of these.
template <class T>
class TRef {
 public:
  TRef() noexcept = default;
  TRef(std::nullptr_t) noexcept {}
  TRef(T* Ptr) noexcept : FPtr(Ptr) {
    if (FPtr) TavoAddReference(FPtr);
  }
  TRef(const TRef& Other) noexcept : TRef(Other.FPtr) {}
  TRef(TRef&& Other) noexcept : FPtr(std::exchange(Other.FPtr, nullptr)) {}
  template <class U, class = std::enable_if_t<std::is_convertible_v<U*, T*>>>
  TRef(const TRef<U>& Other) noexcept : TRef(Other.Get()) {}
  template <class U, class = std::enable_if_t<std::is_convertible_v<U*, T*>>>
  TRef(TRef<U>&& Other) noexcept : FPtr(Other.Detach()) {}
  ~TRef() {
    if (FPtr) TavoReleaseReference(FPtr);
  }

  TRef& operator=(const TRef& Other) noexcept {
    TRef(Other).Swap(*this);
    return *this;
  }
  TRef& operator=(TRef&& Other) noexcept {
    TRef(std::move(Other)).Swap(*this);
    return *this;
  }

  // Takes over a reference that Ptr already holds for the handle.
  static TRef Adopt(T* Ptr) noexcept {
    TRef Result;
    Result.FPtr = Ptr;
    return Result;
  }

  T* Get() const noexcept { return FPtr; }
  T* operator->() const noexcept { return FPtr; }
  T& operator*() const noexcept { return *FPtr; }
  explicit operator bool() const noexcept { return FPtr != nullptr; }

  void Reset() noexcept { TRef().Swap(*this); }
  void Swap(TRef& Other) noexcept { std::swap(FPtr, Other.FPtr); }
  // Gives up the reference without releasing it.
  T* Detach() noexcept { return std::exchange(FPtr, nullptr); }

  friend bool operator==(const TRef& A, const TRef& B) noexcept { return A.FPtr == B.FPtr; }
  friend bool operator==(const TRef& A, std::nullptr_t) noexcept { return A.FPtr == nullptr; }
  friend bool operator==(const TRef& A, const T* B) noexcept { return A.FPtr == B; }

 private:
  T* FPtr = nullptr;
};

// The one way to make a shared object: construct it, hold it, then run its
// after-construction step.
template <class T, class... A>
TRef<T> Make(A&&... Args) {
  T* Object = new T(std::forward<A>(Args)...);
  Object->AdoptFirstReference();
  TRef<T> Result = TRef<T>::Adopt(Object);
  Result->AfterConstruction();
  return Result;
}

// Asks a counted reference for another interface of its object; null when
// the object does not offer it.
template <class T, class U>
TRef<T> RefCast(const TRef<U>& Source) noexcept {
  return TRef<T>(dynamic_cast<T*>(Source.Get()));
}

// The base of every shared object of the engine: counted, persistent,
// cloneable, comparable, with a free Tag for the host. Tags are rare, so an
// object keeps its tag in a table of the process rather than in a field of
// its own; a bit of the packed bytes says whether it has one.
class TCloneableObject : public TCounted<TPersistent> {
  TAVO_CLASS(TCloneableObject, TPersistent)
 public:
  TCloneableObject() = default;
  ~TCloneableObject() override;

  using TPersistent::Assign;
  // Copies from another shared object through its interface.
  virtual void Assign(const TRef<TCloneableObject>& Source) { Assign(Source.Get()); }
  virtual TRef<TCloneableObject> Clone() const;
  // Equality with any object, which may be of another kind.
  virtual bool Equals(const TCloneableObject* Other) const { return Other == this; }
  virtual int32_t GetHashCode() const;

  intptr_t GetTag() const { return (FPacked.Flags & HasTagFlag) ? LookupTag() : 0; }
  virtual void SetTag(intptr_t Value);

 protected:
  // Four bytes that would otherwise be padding behind the count: a derived
  // class packs small state of its own here (a value keeps its tag in them).
  // The top bit of Flags is this class's own.
  struct TPackedBits {
    uint8_t Kind = 0;
    uint8_t Flags = 0;
    uint16_t Index = 0;
  } FPacked;
  static constexpr uint8_t HasTagFlag = 0x80;

 private:
  intptr_t LookupTag() const;
};

using ICloneableObject = TRef<TCloneableObject>;

// Makes a new instance of Class and assigns Source to it. Fails when the
// class cannot be instantiated without arguments or is not persistent.
std::unique_ptr<TPersistent> ClonePersistentClass(const TPersistent* Source, const TClass& Class);

inline constexpr char16_t SDuplicateComponentName[] = u"A component named %s already exists";
inline constexpr char16_t SCannotCreateInstance[] = u"Cannot create an instance of class %s";

enum TOperation { opInsert, opRemove };
// csNamed says that the component has a name, which is kept out of line.
enum TComponentStateFlag { csLoading, csDestroying, csNamed };
using TComponentState = TSet<TComponentStateFlag>;

// An object that owns sub-components (freed with it) and tells registered
// peers when it goes away. Components are plain objects, not counted.
//
// A component's Notification runs during the teardown of its peers and of its
// owned components; a derived class that needs its own Notification to run
// while it is itself being destroyed calls DestroyComponents in its own
// destructor.
class TComponent : public TPersistent {
  TAVO_CLASS(TComponent, TPersistent)
 public:
  explicit TComponent(TComponent* AOwner = nullptr);
  ~TComponent() override;
  TComponent(const TComponent&) = delete;
  TComponent& operator=(const TComponent&) = delete;

  TComponent* GetOwner() const { return FOwner; }
  int GetComponentCount() const { return int(FComponents.size()); }
  TComponent* GetComponent(int Index) const { return FComponents.at(size_t(Index)); }
  // A named component is unique by name among the components of its owner.
  // Inserting one where its name is taken raises.
  void InsertComponent(TComponent* Component);
  void RemoveComponent(TComponent* Component);
  // Frees every owned component, last first.
  void DestroyComponents();

  // The name by which the owner finds the component; empty for none. Few
  // components have one, so names live in a table of the process rather
  // than in a field of every component. A name that another component of
  // the same owner has raises SDuplicateComponentName.
  String GetName() const;
  void SetName(const String& Value);
  // The owned component of that name (exact case), or null; an empty name
  // finds nothing.
  TComponent* FindComponent(StringView Name) const;

  // Registers Component for a Notification when this one is freed, and the
  // other way round.
  void FreeNotification(TComponent* Component);
  void RemoveFreeNotification(TComponent* Component);

  const TComponentState& GetComponentState() const { return FComponentState; }
  void SetLoading(bool Value);
  bool IsDestroying() const { return FComponentState.Contains(csDestroying); }
  // Marks the component as being destroyed; the destructor does it too.
  void Destroying() { FComponentState.Include(csDestroying); }
  // Tells every peer registered by FreeNotification that this component
  // goes. The destructor does it; a derived class whose peers must still
  // see its own class calls it first in its own destructor.
  void NotifyFreeing();

  // Component was inserted into or is being removed from this component, or
  // a peer registered by FreeNotification is being freed.
  virtual void Notification(TComponent* Component, TOperation Operation);

 private:
  void RemoveNotification(TComponent* Component);

  TComponent* FOwner = nullptr;
  std::vector<TComponent*> FComponents;
  std::vector<TComponent*> FFreeNotifies;
  TComponentState FComponentState;
};

// A component that does one thing when asked: a host derives from it and
// overrides Execute, or assigns OnExecute.
class TBasicAction : public TComponent {
  TAVO_CLASS(TBasicAction, TComponent)
 public:
  explicit TBasicAction(TComponent* AOwner = nullptr) : TComponent(AOwner) {}
  // Runs OnExecute and answers true; false when none is assigned.
  virtual bool Execute();

  TNotifyEvent OnExecute;
};

// A component that passes every Notification on to an object that cannot
// take part in free notification itself, such as a counted object.
template <class T>
class TNotificationNexus : public TComponent {
 public:
  explicit TNotificationNexus(T* Target = nullptr) : FTarget(Target) {}
  void Notification(TComponent* Component, TOperation Operation) override {
    TComponent::Notification(Component, Operation);
    // The target may free this nexus in answer: nothing may follow the call.
    if (FTarget) FTarget->Notification(Component, Operation);
  }

 private:
  T* FTarget;
};

// Makes a component of Source's class under Source's owner and assigns Source
// to it: the road by which owned objects are copied. The owner, if any, owns
// the result. Null when the class has no default factory.
TComponent* CloneComponent(const TComponent* Source);

}  // namespace tavo
