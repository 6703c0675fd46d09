// Following a slash-separated node path through a value tree.
#include "json/JsonValue.h"

JsonAutoRefPtr<JsonValue> JsonValue::NodeFromPath(const std::string& path) const {
    // One leading slash is dropped (only one: "//a" starts with an empty step). An empty rest
    // names the current node, so "" and "/" name the start and a trailing slash is ignored.
    size_t pos = (!path.empty() && path[0] == '/') ? 1 : 0;
    const JsonValue* current = this;
    std::string step;
    while (pos < path.size()) {
        const size_t slash = path.find('/', pos);
        const size_t stop = slash == std::string::npos ? path.size() : slash;
        step.assign(path, pos, stop - pos);
        current = current->GetSubNode(step);
        if (!current) return nullptr;
        pos = slash == std::string::npos ? path.size() : slash + 1;
    }
    return JsonAutoRefPtr<JsonValue>::Share(const_cast<JsonValue*>(current));
}
