// RefCounted: the reference counting shared by every object the host hands to a module.
// Objects are created holding one reference for their creator, so AutoRefPtr<I>(new X)
// owns a new object; the Interface_Release that drops the last reference deletes it. The
// count is atomic because modules may keep and release references from their own threads.
#pragma once

#include "host/InterfaceImpl.h"

namespace vhost {

/// Implements the IObject part of interface I: the SDK's own implementation, which the
/// module's objects use too.
template <class I> using RefCounted = Virelo::InterfaceImpl<I>;

} // namespace vhost
