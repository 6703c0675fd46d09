// HostVector: creating host vectors by element code and reading any IVector.
#include "tools/vhost/host/HostVector.h"

namespace vhost {

namespace {

// The vector's true element type cannot be asked for; each element variant's type code is
// checked instead, so a vector of another kind is refused rather than misread.
template <class T, class Get>
std::optional<std::vector<T>> ReadVector(Virelo::IObject* object, unsigned int code, Get get) {
    std::vector<T> items;
    if (!object) return items;
    const auto* vector = static_cast<const Virelo::IVector<T>*>(object);
    const unsigned long long size = vector->Interface_Size();
    for (unsigned long long i = 0; i < size; ++i) {
        Virelo::AutoRefPtr<Virelo::IVariant> element(vector->Interface_At(i));
        if (!element || element->Interface_GetType() != code) return std::nullopt;
        items.push_back(get(*element));
    }
    return items;
}

} // namespace

Virelo::IObject* CreateHostVector(unsigned int elementType) {
    switch (elementType) {
    case Virelo::eTypeBoolean:
        return new HostVector<bool>();
    case Virelo::eTypeNumber:
        return new HostVector<double>();
    case Virelo::eTypeString:
        return new HostVector<std::string>();
    default:
        return nullptr;
    }
}

std::optional<std::vector<bool>> ReadBooleanVector(Virelo::IObject* vector) {
    return ReadVector<bool>(vector, Virelo::eTypeBoolean, [](const Virelo::IVariant& v) {
        return v.Interface_GetBoolean() != 0;
    });
}

std::optional<std::vector<double>> ReadNumberVector(Virelo::IObject* vector) {
    return ReadVector<double>(vector, Virelo::eTypeNumber,
                              [](const Virelo::IVariant& v) { return v.Interface_GetNumber(); });
}

std::optional<std::vector<std::string>> ReadStringVector(Virelo::IObject* vector) {
    return ReadVector<std::string>(vector, Virelo::eTypeString, [](const Virelo::IVariant& v) {
        return std::string(v.Interface_GetStringData(),
                           static_cast<size_t>(v.Interface_GetStringLength()));
    });
}

} // namespace vhost
