// JSONData: the document, its error state, text output, scalar conversions and the path walk.
#include "host/ijson/JSONData.h"
#include "host/FixedTexts.h"

#include "json/JsonArray.h"
#include "json/JsonObject.h"
#include "json/JsonScalar.h"

#include <cstdint>
#include <cstdlib>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>

namespace Virelo::JSON {

namespace {
JsonValue* StartValue(EJsonStartType start) {
    switch (start) {
    case EJsonStartType::Object:
        return new JsonObject();
    case EJsonStartType::Array:
        return new JsonArray();
    default:
        return new JsonNull();
    }
}
} // namespace

JSONData::JSONData(EJsonStartType start) : fValue(StartValue(start)) {}

JSONData::JSONData(const JsonAutoRefPtr<JsonValue>& value)
    : fValue(value ? value : JsonAutoRefPtr<JsonValue>(new JsonNull())) {}

JSONData::JSONData(JsonAutoRefPtr<JsonValue>&& value)
    : fValue(value ? std::move(value) : JsonAutoRefPtr<JsonValue>(new JsonNull())) {}

JSONData::JSONData(const JSONData* source) {
    if (!source) {
        fValue = JsonAutoRefPtr<JsonValue>(new JsonNull());
        fErrorStatus = EJsonErrorStatus::Error;
        fErrorMessage = Texts::kCantCopyNull;
        return;
    }
    // The tree is copied without a lock (it is never locked); only the error state is read
    // under the source's lock.
    const JsonAutoRefPtr<JsonValue> root = source->fValue;
    fValue = JsonAutoRefPtr<JsonValue>(root ? JsonValue::CopyNoARefPtr(*root) : new JsonNull());
    std::shared_lock lock(source->fMutex);
    fErrorStatus = source->fErrorStatus;
    fErrorMessage = source->fErrorMessage;
}

// MARK: - Error state

void JSONData::SetState(EJsonErrorStatus status, std::string&& message) {
    std::unique_lock lock(fMutex);
    fErrorStatus = status;
    fErrorMessage = std::move(message);
}

void JSONData::SetError(const std::string& message) {
    SetState(EJsonErrorStatus::Error, std::string(message));
}
void JSONData::SetError(std::string&& message) {
    SetState(EJsonErrorStatus::Error, std::move(message));
}
void JSONData::SetWarning(const std::string& message) {
    SetState(EJsonErrorStatus::Warning, std::string(message));
}
void JSONData::SetWarning(std::string&& message) {
    SetState(EJsonErrorStatus::Warning, std::move(message));
}

void JSONData::ClearError() {
    std::unique_lock lock(fMutex);
    if (fErrorStatus == EJsonErrorStatus::None) return;
    fErrorStatus = EJsonErrorStatus::None;
    fErrorMessage.clear();
}

unsigned int JSONData::GetErrorStatus() const {
    std::shared_lock lock(fMutex);
    return static_cast<unsigned int>(fErrorStatus);
}

std::string JSONData::GetErrorMessage() const {
    std::shared_lock lock(fMutex);
    return fErrorMessage;
}

JSONData::ErrorState JSONData::GetError() const {
    std::shared_lock lock(fMutex);
    return {fErrorStatus, fErrorMessage};
}

// MARK: - Text

void JSONData::ToString(std::string& out, const char* format) const {
    if (!fValue) return;
    out.clear();
    if (!format || !*format) {
        fValue->AppendToString(out);
    } else {
        fValue->AppendToStringPretty(out, format, "\n", 0);
    }
}

void JSONData::ToCachedString(std::string& out, const char* format) const {
    ToString(out, format);
}

// MARK: - Scalar conversions

bool JSONData::AsBool(const JsonAutoRefPtr<JsonValue>& node, bool& out) {
    out = false;
    return node && node->GetAsBool(out);
}

bool JSONData::AsString(const JsonAutoRefPtr<JsonValue>& node, std::string& out) {
    out.clear();
    return node && node->GetAsString(out);
}

bool JSONData::AsDouble(const JsonAutoRefPtr<JsonValue>& node, double& out) {
    out = 0.0;
    return node && node->GetAsReal(out);
}

bool JSONData::AsInt(const JsonAutoRefPtr<JsonValue>& node, int& out) {
    out = 0;
    long long value = 0;
    if (!node || !node->GetAsInteger(value) || value != static_cast<int32_t>(value)) return false;
    out = static_cast<int>(value);
    return true;
}

bool JSONData::AsUInt(const JsonAutoRefPtr<JsonValue>& node, unsigned int& out) {
    out = 0;
    long long value = 0;
    if (!node || !node->GetAsInteger(value) || value < 0 || value > 4294967295LL) return false;
    out = static_cast<unsigned int>(value);
    return true;
}

bool JSONData::AsInt64(const JsonAutoRefPtr<JsonValue>& node, long long& out) {
    out = 0;
    return node && node->GetAsInteger(out);
}

bool JSONData::AsUInt64(const JsonAutoRefPtr<JsonValue>& node, unsigned long long& out) {
    out = 0;
    long long value = 0;
    if (!node || !node->GetAsInteger(value) || value < 0) return false;
    out = static_cast<unsigned long long>(value);
    return true;
}

// MARK: - Path walk

JsonAutoRefPtr<JsonValue> JSONData::FindNodePath(const JsonAutoRefPtr<JsonValue>& root,
                                                 const char* path) {
    JsonAutoRefPtr<JsonValue> node = root;
    // The path is walked in place, one step at a time: a path of millions of slashes costs the
    // memory of its longest step and time in proportion to its length.
    const std::string_view rest = path ? std::string_view(path) : std::string_view();
    size_t next = !rest.empty() && rest.front() == '/' ? 1 : 0;
    std::string step;
    while (next < rest.size()) {
        const size_t slash = rest.find('/', next);
        const size_t stop = slash == std::string_view::npos ? rest.size() : slash;
        step.assign(rest, next, stop - next);
        next = stop + 1;

        const JsonValue::EJsonValueType type = node ? node->GetType() : JsonValue::eJsonNull;
        if (type == JsonValue::eJsonObject) {
            node = static_cast<const JsonObject&>(*node).At(step);
            if (!node) {
                SetError(Texts::kFetchingSubnode);
                return nullptr;
            }
        } else if (type == JsonValue::eJsonArray) {
            if (step.empty()) continue; // "a//b": an empty step stays on the array
            if (step[0] < '0' || step[0] > '9') {
                SetWarning(Texts::kIndexNotANumber);
                return nullptr;
            }
            const auto& array = static_cast<const JsonArray&>(*node);
            // Deliberate: only the first character is tested and strtol reads the leading
            // digits ("3abc" is 3); the number is then taken as a signed 32-bit index, like
            // the element count it is compared with. strtol cannot throw, whatever the step.
            const auto index = static_cast<int32_t>(std::strtol(step.c_str(), nullptr, 10));
            if (index < 0 || index >= static_cast<int32_t>(array.Size())) {
                SetWarning(Texts::kIndexOutOfRange);
                return nullptr;
            }
            node = array.AtIndex(static_cast<unsigned long>(index));
            if (!node) {
                SetError(Texts::kFetchingArraySubnode);
                return nullptr;
            }
        } else {
            // Deliberate: compiled objects are not entered by this walk, like scalars.
            SetWarning(Texts::kSubnodeNotFound);
            return nullptr;
        }
    }
    return node;
}

} // namespace Virelo::JSON
