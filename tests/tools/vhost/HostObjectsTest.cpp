// The host's interface objects as a module sees them: data blocks with and without a direct
// pointer, variants and their type codes, vectors and the reading of a module's vectors.
#include "tools/vhost/host/HostDataRef.h"
#include "tools/vhost/host/HostVariant.h"
#include "tools/vhost/host/HostVector.h"

#include <gtest/gtest.h>

#include <string>

using vhost::HostDataRef;
using Virelo::AutoRefPtr;

namespace {

// A module's data block that hands out at most three bytes per read and no pointer.
class ChunkedData final : public vhost::RefCounted<Virelo::IDataRef> {
public:
    explicit ChunkedData(std::string bytes) : fBytes(std::move(bytes)) {}
    unsigned long long Interface_GetSize() const override { return fBytes.size(); }
    void Interface_Assign(const char*, unsigned long long) override {}
    unsigned long long Interface_Read(char* target, unsigned long long size,
                                      unsigned long long offset) const override {
        if (offset >= fBytes.size()) return 0;
        const std::string piece = fBytes.substr(offset, std::min<unsigned long long>(size, 3));
        piece.copy(target, piece.size());
        return piece.size();
    }
    bool Interface_IsEqual(Virelo::IDataRef*) const override { return false; }
    Virelo::IDataRef* Interface_Clone() const override { return nullptr; }
    const char* Interface_GetData() const override { return nullptr; }

private:
    std::string fBytes;
};

// A module's number vector that wrongly holds a string.
class MixedVector final : public vhost::RefCounted<Virelo::IVector<double>> {
public:
    unsigned long long Interface_Size() const override { return 2; }
    Virelo::IVariant* Interface_At(unsigned long long index) const override {
        return index == 0 ? vhost::HostVariant::FromNumber(1).Detach()
                          : vhost::HostVariant::FromString("2").Detach();
    }
    void Interface_PushBack(const double&) override {}
};

} // namespace

TEST(HostDataRef, DirectAndReadOnlyBlocksHoldTheSameBytes) {
    const std::string bytes("a\0bcdef", 7);
    for (HostDataRef::EAccess access :
         {HostDataRef::EAccess::eDirect, HostDataRef::EAccess::eReadOnly}) {
        SCOPED_TRACE(access == HostDataRef::EAccess::eDirect ? "direct" : "read only");
        AutoRefPtr<Virelo::IDataRef> data = HostDataRef::Create(bytes, access);
        EXPECT_EQ(data->Interface_GetData() != nullptr, access == HostDataRef::EAccess::eDirect);
        EXPECT_EQ(data->Interface_GetSize(), 7u);
        char buffer[8] = {};
        EXPECT_EQ(data->Interface_Read(buffer, 4, 5), 2u);
        EXPECT_EQ(std::string(buffer, 2), "ef");
        EXPECT_EQ(data->Interface_Read(buffer, 4, 7), 0u);
        EXPECT_EQ(data->Interface_Read(nullptr, 4, 0), 0u);
        EXPECT_EQ(vhost::ReadAllBytes(data.Get()), bytes);

        AutoRefPtr<Virelo::IDataRef> copy(data->Interface_Clone());
        EXPECT_EQ(copy->Interface_GetData() != nullptr, access == HostDataRef::EAccess::eDirect);
        EXPECT_TRUE(copy->Interface_IsEqual(data.Get()));
        copy->Interface_Assign("xy", 2);
        EXPECT_FALSE(copy->Interface_IsEqual(data.Get()));
        EXPECT_EQ(vhost::ReadAllBytes(copy.Get()), "xy");
        copy->Interface_Assign(nullptr, 5);
        EXPECT_EQ(copy->Interface_GetSize(), 0u);
        EXPECT_FALSE(data->Interface_IsEqual(nullptr));
    }
}

TEST(HostDataRef, ReadsAModulesBlockInPieces) {
    AutoRefPtr<Virelo::IDataRef> chunked(new ChunkedData("0123456789"));
    EXPECT_EQ(vhost::ReadAllBytes(chunked.Get()), "0123456789");
    AutoRefPtr<Virelo::IDataRef> ours =
        HostDataRef::Create("0123456789", HostDataRef::EAccess::eDirect);
    EXPECT_TRUE(ours->Interface_IsEqual(chunked.Get()));
}

TEST(HostVariant, SettersChooseTheTypeAndGettersReadOnlyTheirOwnKind) {
    AutoRefPtr<vhost::HostVariant> variant = vhost::HostVariant::Create();
    EXPECT_EQ(variant->Interface_GetType(), Virelo::eTypeNone);
    variant->Interface_SetString("a\0b", 3);
    EXPECT_EQ(variant->Interface_GetType(), Virelo::eTypeString);
    EXPECT_EQ(variant->Interface_GetStringLength(), 3u);
    EXPECT_EQ(variant->Interface_GetNumber(), 0.0);
    variant->Interface_SetNumber(2.5);
    EXPECT_STREQ(variant->Interface_GetStringData(), "");
    EXPECT_EQ(variant->Interface_GetNumber(), 2.5);
    variant->Interface_SetBoolean(7);
    EXPECT_EQ(variant->Interface_GetBoolean(), 1);

    // NONE: a user-defined type without object; setting null keeps the type.
    variant->SetNone(23);
    EXPECT_EQ(variant->Interface_GetType(), 23u);
    EXPECT_EQ(variant->Interface_GetUserDefined(), nullptr);
    variant->Interface_SetUserDefined(nullptr);
    EXPECT_EQ(variant->Interface_GetType(), 23u);
    variant->Interface_SetNumber(1);
    variant->Interface_SetUserDefined(nullptr);
    EXPECT_EQ(variant->Interface_GetType(), Virelo::eTypeUserDefined);
}

TEST(HostVariant, GettersHandOutAReferenceAndSettersTakeTheirOwn) {
    AutoRefPtr<Virelo::IDataRef> data = HostDataRef::Create("ab", HostDataRef::EAccess::eDirect);
    AutoRefPtr<vhost::HostVariant> variant = vhost::HostVariant::Create();
    variant->Interface_SetDataRef(data.Get());
    EXPECT_EQ(data->Interface_GetCount(), 2u);
    {
        AutoRefPtr<Virelo::IDataRef> got(variant->Interface_GetDataRef());
        EXPECT_EQ(got.Get(), data.Get());
        EXPECT_EQ(data->Interface_GetCount(), 3u);
    }
    variant.Reset();
    EXPECT_EQ(data->Interface_GetCount(), 1u);
}

TEST(HostVector, ElementsComeOutAsNewVariantsAndForeignKindsAreRefused) {
    AutoRefPtr<Virelo::IObject> object(vhost::CreateHostVector(Virelo::eTypeString));
    auto* strings = static_cast<Virelo::IVector<std::string>*>(object.Get());
    strings->Interface_PushBack("x");
    strings->Interface_PushBack(std::string("y\0z", 3));
    EXPECT_EQ(strings->Interface_At(2), nullptr);
    AutoRefPtr<Virelo::IVariant> second(strings->Interface_At(1));
    EXPECT_EQ(second->Interface_GetType(), Virelo::eTypeString);
    EXPECT_EQ(second->Interface_GetStringLength(), 3u);

    const auto read = vhost::ReadStringVector(object.Get());
    ASSERT_TRUE(read.has_value());
    EXPECT_EQ(*read, (std::vector<std::string>{"x", std::string("y\0z", 3)}));
    AutoRefPtr<Virelo::IObject> mixed(new MixedVector());
    EXPECT_FALSE(vhost::ReadNumberVector(mixed.Get()).has_value());
    EXPECT_TRUE(vhost::ReadBooleanVector(nullptr).value().empty());
    EXPECT_EQ(vhost::CreateHostVector(Virelo::eTypeDataRef), nullptr);
}
