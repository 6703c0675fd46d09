// RefCounted: the reference counting shared by every object the host hands to a module.
// Objects are created holding one reference for their creator, so AutoRefPtr<I>(new X)
// owns a new object; the Interface_Release that drops the last reference deletes it.
#pragma once

#include <atomic>

namespace vhost {

/// Implements the IObject part of interface I. The count is atomic because modules may
/// keep and release references from their own threads.
template <class I> class RefCounted : public I {
public:
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

} // namespace vhost
