// InterfaceImpl: the reference count shared by the module's implementations of host
// interfaces. The count starts at 1 (the creator's reference); the last release deletes the
// object through the interface's virtual destructor.
#pragma once

#include <atomic>

namespace Virelo {

template <class Interface> class InterfaceImpl : public Interface {
public:
    InterfaceImpl() noexcept = default;
    /// A copy is a new object: it starts with its own single reference.
    InterfaceImpl(const InterfaceImpl&) noexcept : Interface() {}
    InterfaceImpl& operator=(const InterfaceImpl&) = delete;

    void Interface_AddRef() const override { fCount.fetch_add(1, std::memory_order_relaxed); }
    unsigned int Interface_Release() const override {
        if (fCount.fetch_sub(1, std::memory_order_acq_rel) != 1) return 0;
        delete this;
        return 1;
    }
    unsigned int Interface_GetCount() const override {
        return fCount.load(std::memory_order_relaxed);
    }

private:
    mutable std::atomic<unsigned int> fCount{1};
};

} // namespace Virelo
