// HostVector: the host's vectors of booleans, numbers and strings (VECTOR<...> values), and
// reading the elements of any module's vector through the IVector operations.
#pragma once

#include "host/VireloInterfaces.h"
#include "tools/vhost/host/HostVariant.h"
#include "tools/vhost/host/RefCounted.h"

#include <optional>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace vhost {

/// T is bool, double or std::string, as in Virelo::IVector.
template <class T> class HostVector final : public RefCounted<Virelo::IVector<T>> {
public:
    explicit HostVector(std::vector<T> items = {}) : fItems(std::move(items)) {}

    unsigned long long Interface_Size() const override { return fItems.size(); }
    /// A new variant holding a copy of the element; null out of range.
    Virelo::IVariant* Interface_At(unsigned long long index) const override {
        if (index >= fItems.size()) return nullptr;
        const T& item = fItems[static_cast<size_t>(index)];
        if constexpr (std::is_same_v<T, bool>)
            return HostVariant::FromBoolean(item).Detach();
        else if constexpr (std::is_same_v<T, double>)
            return HostVariant::FromNumber(item).Detach();
        else
            return HostVariant::FromString(item).Detach();
    }
    void Interface_PushBack(const T& value) override { fItems.push_back(value); }

private:
    std::vector<T> fItems;
};

/// A new empty host vector for the element code eTypeBoolean, eTypeNumber or eTypeString
/// (one reference for the caller), else null.
Virelo::IObject* CreateHostVector(unsigned int elementType);

/// The elements of `vector`, an IVector<T> of the given element code, or nothing when an
/// element is missing or of another kind. Null reads as empty.
std::optional<std::vector<bool>> ReadBooleanVector(Virelo::IObject* vector);
std::optional<std::vector<double>> ReadNumberVector(Virelo::IObject* vector);
std::optional<std::vector<std::string>> ReadStringVector(Virelo::IObject* vector);

} // namespace vhost
