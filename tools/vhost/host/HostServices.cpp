// HostServices: the services over the module's interfaces.
#include "tools/vhost/host/HostServices.h"

#include "host/VireloIJSON.h"
#include "tools/vhost/host/HostJson.h"

#include <utility>

namespace vhost {

namespace {

constexpr unsigned long long sRefused = ~0ULL;

// Runs `body` as one call of the service `name`; an exception other than our own refusals
// is the module's and becomes a ModuleFault.
template <class Body> auto AsCall(Host& host, const char* name, const CallSite& site, Body body) {
    host.Context().SetLocation(site.fFile, site.fLine);
    host.Context().BeginCall();
    try {
        return body();
    } catch (const ModuleFault&) {
        throw;
    } catch (...) {
        throw ModuleFault(std::string(name) + ": the module let a C++ exception escape");
    }
}

Virelo::AutoRefPtr<Virelo::IUserDefinedType> CreateInstance(Host& host, unsigned int typeId,
                                                            const std::string& service) {
    Virelo::AutoRefPtr<Virelo::ITypeObject> type(host.Context().Interface_GetTypeObject(typeId));
    Virelo::AutoRefPtr<Virelo::IUserDefinedType> instance;
    if (type)
        instance = Virelo::AutoRefPtr<Virelo::IUserDefinedType>(type->Interface_CreateInstance());
    if (!instance) throw ModuleFault(service + ": the type's factory made no value");
    return instance;
}

} // namespace

std::string SerializeValue(Host& host, const Virelo::IUserDefinedType& value,
                           const CallSite& site) {
    return AsCall(host, "serialize", site, [&] {
        Virelo::AutoRefPtr<Virelo::IJSON> document(value.Interface_Serialize(&host.Context()));
        if (!document) throw ModuleFault("serialize: the value gives no document");
        const unsigned long long size = document->Interface_SerializedSize();
        std::string bytes(static_cast<size_t>(size), '\0');
        const unsigned long long written = document->Interface_Serialize(bytes.data(), size);
        if (written == sRefused || written > size)
            throw ModuleFault("serialize: the document refuses to serialize into " +
                              std::to_string(size) + " bytes");
        bytes.resize(static_cast<size_t>(written));
        return bytes;
    });
}

Virelo::AutoRefPtr<Virelo::IUserDefinedType> DeserializeValue(Host& host,
                                                              const std::string& typeName,
                                                              std::string_view bytes,
                                                              const CallSite& site) {
    return AsCall(host, "deserialize", site, [&] {
        Virelo::AutoRefPtr<HostJson> document = HostJson::Create();
        const unsigned long long read = document->Interface_Deserialize(bytes.data(), bytes.size());
        if (read == sRefused)
            throw ModuleFault("deserialize: " + std::to_string(bytes.size()) +
                              " bytes are no serialized form (truncated)");
        if (read != bytes.size())
            throw ModuleFault("deserialize: " + std::to_string(bytes.size() - read) + " of " +
                              std::to_string(bytes.size()) + " bytes follow the serialized form");
        const unsigned int typeId = host.Context().Interface_GetTypeId(typeName.c_str());
        if (typeId == 0) throw ModuleFault("deserialize: no type " + typeName + " is registered");
        Virelo::AutoRefPtr<Virelo::IUserDefinedType> value =
            CreateInstance(host, typeId, "deserialize");
        if (!value->Interface_Deserialize(document.Get(), &host.Context()))
            throw ModuleFault("deserialize: the " + typeName + " value refuses the document");
        return value;
    });
}

Virelo::AutoRefPtr<Virelo::IUserDefinedType>
CloneValue(Host& host, const Virelo::IUserDefinedType& value, const CallSite& site) {
    return AsCall(host, "clone", site, [&] {
        Virelo::AutoRefPtr<Virelo::IUserDefinedType> copy(value.Interface_Clone());
        if (!copy) throw ModuleFault("clone: the value gives no copy");
        return copy;
    });
}

Virelo::AutoRefPtr<Virelo::IUserDefinedType>
TransferValue(Host& host, const Virelo::IUserDefinedType& value, const CallSite& site) {
    return AsCall(host, "transfer", site, [&] {
        Virelo::AutoRefPtr<Virelo::IUserDefinedType> target =
            CreateInstance(host, value.Interface_GetType(), "transfer");
        void* data = nullptr;
        const unsigned long long size = value.Interface_ToBinaryData(&data, sValueHandover);
        if (size != 0) target->Interface_FromBinaryData(data, size, sValueHandover);
        return target;
    });
}

bool ValueLessThan(Host& host, const Virelo::IUserDefinedType& a, const Virelo::IUserDefinedType& b,
                   const CallSite& site) {
    return AsCall(host, "lessthan", site, [&] { return a.Interface_LessThan(&b); });
}

} // namespace vhost
