// JsonElements: the element pointers of a JsonArray. Up to two are held in place, so that the
// many short arrays of real documents (coordinate pairs, one-element lists) need no block of
// their own; more live in one block of the node pool. A vector's interface, as far as the
// engine uses it; it owns its storage, never the elements (the array releases those).
#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>

class JsonValue;

class JsonElements {
public:
    using value_type = JsonValue*;
    using iterator = JsonValue**;
    using const_iterator = JsonValue* const*;

    JsonElements() noexcept : fInPlace{nullptr, nullptr} {}
    JsonElements(const JsonElements&) = delete;
    JsonElements& operator=(const JsonElements&) = delete;
    JsonElements(JsonElements&& other) noexcept : JsonElements() { swap(other); }
    JsonElements& operator=(JsonElements&& other) noexcept {
        JsonElements(std::move(other)).swap(*this);
        return *this;
    }
    ~JsonElements() { FreeBlock(); }

    size_t size() const noexcept { return fSize & ~kInBlock; }
    bool empty() const noexcept { return size() == 0; }
    size_t capacity() const noexcept { return InBlock() ? fBlock.fCapacity : kInPlace; }
    JsonValue** data() noexcept { return InBlock() ? fBlock.fData : fInPlace; }
    JsonValue* const* data() const noexcept { return InBlock() ? fBlock.fData : fInPlace; }
    iterator begin() noexcept { return data(); }
    iterator end() noexcept { return data() + size(); }
    const_iterator begin() const noexcept { return data(); }
    const_iterator end() const noexcept { return data() + size(); }
    JsonValue*& operator[](size_t i) noexcept { return data()[i]; }
    JsonValue* operator[](size_t i) const noexcept { return data()[i]; }
    JsonValue* back() const noexcept { return data()[size() - 1]; }

    /// Room for `count` elements in all. Throws std::bad_alloc, leaving the elements as they
    /// were; so do the growing operations below.
    void reserve(size_t count) {
        if (count > capacity()) MoveTo(count);
    }
    void push_back(JsonValue* element) {
        if (size() == capacity()) Grow(size() + 1);
        data()[size()] = element;
        ++fSize;
    }
    /// Inserts `element` before `at`.
    void insert(const_iterator at, JsonValue* element);
    /// Appends `count` elements from `first`.
    void append(JsonValue* const* first, size_t count);
    /// Removes [first, last); the capacity stays.
    void erase(const_iterator first, const_iterator last) noexcept;
    /// `count` null elements, replacing the ones held.
    void assign(size_t count, std::nullptr_t);
    /// Removes every element; the capacity stays.
    void clear() noexcept { fSize &= kInBlock; }
    void swap(JsonElements& other) noexcept {
        std::swap(fSize, other.fSize);
        std::swap(fBlock, other.fBlock); // the in-place elements share these bytes
    }

private:
    static constexpr size_t kInPlace = 2;
    static constexpr size_t kInBlock = size_t(1) << 63; ///< in fSize: the elements are in a block

    bool InBlock() const noexcept { return (fSize & kInBlock) != 0; }
    /// Grows to twice the size or `needed`, whichever is more; a first block holds ten.
    void Grow(size_t needed);
    /// Moves the elements into a new block of `capacity`.
    void MoveTo(size_t capacity);
    void FreeBlock() noexcept;

    struct Block {
        JsonValue** fData;
        size_t fCapacity;
    };

    size_t fSize = 0;
    union {
        Block fBlock;
        JsonValue* fInPlace[kInPlace];
    };
};
static_assert(sizeof(JsonElements) == 24);
