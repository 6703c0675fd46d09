// JSONData: one JSON document behind the module's Virelo::IJSON implementation (JSONWrapper),
// together with the outcome of the last interface operation on it. Several wrappers may share
// one JSONData through a std::shared_ptr; wrappers for inner nodes get their own JSONData over
// the same tree, so they share the tree but not the error state.
//
// Deliberate behaviours kept here:
// - The shared mutex guards the error status and message only. The tree is never locked:
//   readers may run side by side, a writer must run alone (the interface's contract).
// - AsUInt64 goes through the signed conversion, so an unsigned integer above 2^63 - 1 is
//   refused here (IJSON's GetUInt64 asks the integer for its unsigned value first).
// - FindNodePath does not enter compiled objects, and reads an array step by its first digits
//   ("3abc" is index 3).
#pragma once

#include "json/JsonValue.h"

#include <cstdint>
#include <shared_mutex>
#include <string>

namespace Virelo::JSON {

/// The outcome of the last interface operation; the values are those Interface_GetErrorStatus
/// hands to the host.
enum class EJsonErrorStatus : uint8_t { None = 0, Warning = 1, Error = 2 };

/// The root a fresh document starts with; any other value gives null.
enum class EJsonStartType : int { Null = 0, Object = 1, Array = 2 };

class JSONData {
public:
    /// A fresh document: null, an empty object or an empty array.
    explicit JSONData(EJsonStartType start = EJsonStartType::Null);
    /// Shares `value` (one reference added); an empty pointer gives a null document.
    explicit JSONData(const JsonAutoRefPtr<JsonValue>& value);
    /// Takes over `value`'s reference and leaves it empty; an empty pointer gives null.
    explicit JSONData(JsonAutoRefPtr<JsonValue>&& value);
    /// A deep copy of `source`'s tree, then its status and message (read under its shared
    /// lock). A null source gives a null document in status Error, "Can't copy NULL object".
    explicit JSONData(const JSONData* source);

    JSONData(const JSONData&) = delete;
    JSONData& operator=(const JSONData&) = delete;

    // ---- Error state (exclusive lock to write, shared lock to read) ----
    void SetError(const std::string& message);
    void SetError(std::string&& message);
    void SetWarning(const std::string& message);
    void SetWarning(std::string&& message);
    /// Back to status None with an empty message (a clean state is left as it is).
    void ClearError();
    unsigned int GetErrorStatus() const;
    std::string GetErrorMessage() const;
    struct ErrorState {
        EJsonErrorStatus fStatus;
        std::string fMessage;
    };
    /// Status and message read together under one lock.
    ErrorState GetError() const;

    // ---- Text ----
    /// The document as text into `out`: compact for a null or empty format, otherwise pretty
    /// with `format` as the indentation unit and "\n" between lines. An empty root leaves `out`
    /// as it was.
    void ToString(std::string& out, const char* format) const;
    /// The same as ToString; no cache is kept.
    void ToCachedString(std::string& out, const char* format) const;

    // ---- Scalar conversions of a node; false (and the output's zero) when refused ----
    static bool AsBool(const JsonAutoRefPtr<JsonValue>& node, bool& out);
    static bool AsString(const JsonAutoRefPtr<JsonValue>& node, std::string& out);
    static bool AsDouble(const JsonAutoRefPtr<JsonValue>& node, double& out);
    static bool AsInt(const JsonAutoRefPtr<JsonValue>& node, int& out);
    static bool AsUInt(const JsonAutoRefPtr<JsonValue>& node, unsigned int& out);
    static bool AsInt64(const JsonAutoRefPtr<JsonValue>& node, long long& out);
    static bool AsUInt64(const JsonAutoRefPtr<JsonValue>& node, unsigned long long& out);

    /// The node that a slash-separated path names under `root` (one leading slash dropped;
    /// array steps are decimal indexes), without copying; or null with the failure recorded
    /// in this document's error state. Never throws for any path text.
    JsonAutoRefPtr<JsonValue> FindNodePath(const JsonAutoRefPtr<JsonValue>& root, const char* path);

    /// The root; empty only after a failed MessagePack read.
    JsonAutoRefPtr<JsonValue> fValue;

private:
    void SetState(EJsonErrorStatus status, std::string&& message);

    EJsonErrorStatus fErrorStatus = EJsonErrorStatus::None;
    std::string fErrorMessage;
    mutable std::shared_mutex fMutex;
};

} // namespace Virelo::JSON
