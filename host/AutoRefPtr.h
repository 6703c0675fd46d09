// Virelo::AutoRefPtr: the host SDK's intrusive smart pointer for interface objects.
#pragma once

#include <cstddef>
#include <utility>

namespace Virelo {

/// Holds one reference to an interface object (anything with Interface_AddRef and
/// Interface_Release). Wrapping a raw pointer takes over the reference it carries (interface
/// getters hand out one reference for the caller); Share() adds one instead.
template <class T> class AutoRefPtr {
    // Safe-bool idiom: the truth test yields a pointer to this never-called member.
    void InvalidCastOfAutoRefPtr() const {}
    using SafeBool = void (AutoRefPtr::*)() const;

public:
    AutoRefPtr() noexcept = default;
    AutoRefPtr(std::nullptr_t) noexcept {}
    /// Takes over the reference that `p` carries.
    explicit AutoRefPtr(T* p) noexcept : fPtr(p) {}
    AutoRefPtr(const AutoRefPtr& other) noexcept : fPtr(other.fPtr) {
        if (fPtr) fPtr->Interface_AddRef();
    }
    AutoRefPtr(AutoRefPtr&& other) noexcept : fPtr(std::exchange(other.fPtr, nullptr)) {}
    ~AutoRefPtr() { Reset(); }

    AutoRefPtr& operator=(const AutoRefPtr& other) noexcept {
        AutoRefPtr(other).Swap(*this);
        return *this;
    }
    AutoRefPtr& operator=(AutoRefPtr&& other) noexcept {
        AutoRefPtr(std::move(other)).Swap(*this);
        return *this;
    }

    /// A pointer that adds its own reference to `p`.
    static AutoRefPtr Share(T* p) noexcept {
        if (p) p->Interface_AddRef();
        return AutoRefPtr(p);
    }

    T* Get() const noexcept { return fPtr; }
    T* operator->() const noexcept { return fPtr; }
    T& operator*() const noexcept { return *fPtr; }
    operator SafeBool() const noexcept { return fPtr ? &AutoRefPtr::InvalidCastOfAutoRefPtr : nullptr; }

    /// Gives the reference to the caller.
    T* Detach() noexcept { return std::exchange(fPtr, nullptr); }
    void Reset() noexcept {
        if (T* old = std::exchange(fPtr, nullptr)) old->Interface_Release();
    }
    void Swap(AutoRefPtr& other) noexcept { std::swap(fPtr, other.fPtr); }

private:
    T* fPtr = nullptr;
};

} // namespace Virelo
