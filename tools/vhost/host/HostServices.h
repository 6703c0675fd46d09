// HostServices: what a host does with module values besides calling script functions:
// storing a value as bytes and restoring it, cloning it, handing it from one variable to a
// new one through the binary-data channel, and ordering two values. Each runs as a call of
// its own (the context's per-call error state reset, the call site set), so the module's
// reports and log lines carry the script's line. A refusal throws ModuleFault with a message
// naming the service.
#pragma once

#include "host/VireloInterfaces.h"
#include "tools/vhost/host/Host.h"

#include <string>
#include <string_view>

namespace vhost {

/// The binary-data format in which a value hands over its tree rather than bytes.
constexpr unsigned long long sValueHandover = 11100;

/// Where a service is used from, for the context's call-stack text and the logger.
struct CallSite {
    std::string fFile;
    unsigned int fLine = 0;
};

/// The serialized form of `value`: its Interface_Serialize(context) document, then that
/// document's Interface_SerializedSize and Interface_Serialize. Throws when the value gives
/// no document or the document refuses to serialize.
std::string SerializeValue(Host& host, const Virelo::IUserDefinedType& value,
                           const CallSite& site = {});

/// A new value of the registered type `typeName` restored from a serialized form: a HostJson
/// reads `bytes` (all of them, no more), the type's factory makes the value, which then takes
/// the document through Interface_Deserialize(document, context). Throws when the type is
/// unknown or makes no instance, the bytes are truncated or run on past the form, or the value
/// refuses the document.
Virelo::AutoRefPtr<Virelo::IUserDefinedType> DeserializeValue(Host& host,
                                                              const std::string& typeName,
                                                              std::string_view bytes,
                                                              const CallSite& site = {});

/// The value's Interface_Clone. Throws when it gives none.
Virelo::AutoRefPtr<Virelo::IUserDefinedType>
CloneValue(Host& host, const Virelo::IUserDefinedType& value, const CallSite& site = {});

/// A new value of the same type (through its factory) given `value`'s content through the
/// binary-data channel: value.Interface_ToBinaryData(&p, 11100), then the new value's
/// Interface_FromBinaryData(p, size, 11100). When either side refuses, the new value keeps
/// what its factory gave it. Throws when the type makes no instance.
Virelo::AutoRefPtr<Virelo::IUserDefinedType>
TransferValue(Host& host, const Virelo::IUserDefinedType& value, const CallSite& site = {});

/// a.Interface_LessThan(b).
bool ValueLessThan(Host& host, const Virelo::IUserDefinedType& a, const Virelo::IUserDefinedType& b,
                   const CallSite& site = {});

} // namespace vhost
