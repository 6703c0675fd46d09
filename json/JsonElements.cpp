// JsonElements: moving between the in-place elements and pool blocks.
#include "json/JsonElements.h"

#include "json/JsonMemory.h"

#include <algorithm>
#include <cstring>
#include <new>

void JsonElements::MoveTo(size_t capacity) {
    if (capacity > (SIZE_MAX >> 4)) throw std::bad_array_new_length();
    auto* block = static_cast<JsonValue**>(JsonMemory::Allocate(capacity * sizeof(JsonValue*)));
    const size_t count = size();
    if (count) std::memcpy(block, data(), count * sizeof(JsonValue*));
    FreeBlock();
    fBlock.fData = block;
    fBlock.fCapacity = capacity;
    fSize = count | kInBlock;
}

void JsonElements::Grow(size_t needed) {
    MoveTo(std::max<size_t>({needed, 2 * size(), 10}));
}

void JsonElements::FreeBlock() noexcept {
    if (InBlock()) JsonMemory::Free(fBlock.fData, fBlock.fCapacity * sizeof(JsonValue*));
}

void JsonElements::insert(const_iterator at, JsonValue* element) {
    const size_t index = static_cast<size_t>(at - begin());
    if (size() == capacity()) Grow(size() + 1);
    JsonValue** first = data();
    std::memmove(first + index + 1, first + index, (size() - index) * sizeof(JsonValue*));
    first[index] = element;
    ++fSize;
}

void JsonElements::append(JsonValue* const* first, size_t count) {
    if (size() + count > capacity()) MoveTo(std::max(size() + count, capacity()));
    if (count) std::memcpy(data() + size(), first, count * sizeof(JsonValue*));
    fSize += count;
}

void JsonElements::erase(const_iterator first, const_iterator last) noexcept {
    const size_t from = static_cast<size_t>(first - begin());
    const size_t to = static_cast<size_t>(last - begin());
    JsonValue** elements = data();
    std::memmove(elements + from, elements + to, (size() - to) * sizeof(JsonValue*));
    fSize -= to - from;
}

void JsonElements::assign(size_t count, std::nullptr_t) {
    clear();
    reserve(count);
    std::fill_n(data(), count, nullptr);
    fSize += count;
}
