// Hosting a module without scripts: loading and refusing module files, type ids and the
// registry, the context's function look-up by exact signature, and calls with their status
// words and error reports. Uses the test module (VHOST_TEST_MODULE).
#include "tools/vhost/host/Host.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <sstream>
#include <string>

using Virelo::AutoRefPtr;

namespace {

// Sets VHOST_TEST_DEFINITION for one scope; the test module reads it on every load.
class DefinitionOverride {
public:
    explicit DefinitionOverride(const std::string& text) {
        setenv("VHOST_TEST_DEFINITION", text.c_str(), 1);
    }
    ~DefinitionOverride() { unsetenv("VHOST_TEST_DEFINITION"); }
};

std::string LoadError(const std::string& path) {
    std::ostringstream diagnostics;
    vhost::Host host(diagnostics);
    std::string error;
    EXPECT_FALSE(host.LoadModule(path, error));
    EXPECT_TRUE(host.Modules().empty());
    return error;
}

} // namespace

TEST(Host, RefusesFilesThatAreNoModules) {
    EXPECT_EQ(LoadError("/nonexistent/lib.so"), "module /nonexistent/lib.so not found");
    EXPECT_EQ(LoadError(VHOST_TEST_SOURCE), std::string(VHOST_TEST_SOURCE) + " is not a module: " +
                                                VHOST_TEST_SOURCE + ": invalid ELF header");
    EXPECT_EQ(LoadError(VHOST_NOT_A_MODULE),
              std::string(VHOST_NOT_A_MODULE) +
                  " is not a module: it exports no GetVireloModuleName");
}

TEST(Host, RefusesMalformedAndUnresolvableDefinitions) {
    const std::string prefix = std::string(VHOST_TEST_MODULE) + ": malformed module definition: ";
    struct Row {
        const char* fText;
        std::string fError;
    } rows[] = {
        {" CONST_FUNCTION STRING F (",
         "entry 1: expected a parameter type, found the end of the text"},
        {" CONST_FUNCTION STRING F (TEXT) : f",
         "unknown type TEXT in CONST_FUNCTION STRING F (TEXT) : f"},
        {" CONST_FUNCTION VECTOR<JSON> F () : f",
         "unknown type VECTOR<JSON> in CONST_FUNCTION VECTOR<JSON> F () : f"},
        {" TYPE A : f : TYPE A : g :", "type A is already defined"},
        {" TYPE STRING : f :", "type STRING is already defined"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.fText);
        DefinitionOverride definition(row.fText);
        EXPECT_EQ(LoadError(VHOST_TEST_MODULE), prefix + row.fError);
    }
}

TEST(Host, RegistersTypesFromTwentyOneAndKeepsMissingSymbolsUnavailable) {
    std::ostringstream diagnostics;
    vhost::Host host(diagnostics);
    std::string error;
    ASSERT_TRUE(host.LoadModule(VHOST_TEST_MODULE, error)) << error;
    {
        // A later module adds its types after the first module's.
        DefinitionOverride definition(" TYPE B : nothing : TYPE C : vt_CreateBox :"
                                      " CONST_FUNCTION C Make (JSON,B) : vt_FromString");
        ASSERT_TRUE(host.LoadModule(VHOST_TEST_MODULE, error)) << error;
    }
    const vhost::Registry& registry = host.GetRegistry();
    EXPECT_EQ(registry.FindType("JSON")->fId, 21u);
    EXPECT_EQ(registry.FindType("B")->fFactory, nullptr);
    EXPECT_EQ(registry.FindType(23u)->fName, "C");
    EXPECT_EQ(registry.FindType(24u), nullptr);
    EXPECT_EQ(host.Context().Interface_GetTypeId("C"), 23u);
    EXPECT_EQ(host.Context().Interface_GetTypeId("STRING"), 0u);
    AutoRefPtr<Virelo::ITypeObject> withoutFactory(host.Context().Interface_GetTypeObject(22u));
    EXPECT_EQ(withoutFactory->Interface_CreateInstance(), nullptr);
    EXPECT_EQ(host.Context().Interface_GetTypeObject(24u), nullptr);

    const vhost::RegisteredFunction* make = registry.FindFunctions("Make").at(0);
    EXPECT_EQ(make->fReturn.fCode, 23u);
    EXPECT_EQ(make->fParameters.at(1).fCode, 22u);
    EXPECT_FALSE(registry.FindSymbol("vt_NotExported")->IsAvailable());
    EXPECT_EQ(registry.FindFunctions("Add").size(), 2u);
}

TEST(Host, GetFunctionMatchesNameAndExactSignature) {
    std::ostringstream diagnostics;
    vhost::Host host(diagnostics);
    std::string error;
    ASSERT_TRUE(host.LoadModule(VHOST_TEST_MODULE, error)) << error;
    struct Row {
        const char* fName;
        std::vector<const char*> fTypes;
        const char* fSymbol; // null: no function
    } rows[] = {
        {"JSON.FromString", {"JSON", "STRING", ""}, "vt_FromString"},
        {"ToString", {"STRING", "JSON", ""}, "vt_ToString"},
        {"Add", {"STRING", "STRING", "STRING", ""}, "vt_AddStrings"},
        {"Add", {"NUMBER", "NUMBER", "NUMBER", ""}, "vt_AddNumbers"},
        {"Where", {"STRING", ""}, "vt_Where"},
        {"Count", {"NUMBER", "VECTOR<STRING>", ""}, "vt_CountStrings"},
        // the list ends at "" even when the count runs on, and never past the count
        {"Add", {"NUMBER", "NUMBER", "NUMBER", "", "STRING"}, "vt_AddNumbers"},
        {"Add", {"NUMBER", "NUMBER", "NUMBER"}, "vt_AddNumbers"},
        // mismatches
        {"Add", {"NUMBER", "NUMBER", ""}, nullptr},
        {"Add", {"STRING", "NUMBER", "NUMBER", ""}, nullptr},
        {"Add", {"NUMBER", "NUMBER", "STRING", ""}, nullptr},
        {"add", {"NUMBER", "NUMBER", "NUMBER", ""}, nullptr},
        {"Count", {"NUMBER", "VECTOR<BOOLEAN>", ""}, nullptr},
        {"Gone", {"STRING", "STRING", ""}, nullptr}, // declared, symbol missing
        {"Where", {""}, nullptr},
        {"Where", {}, nullptr},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(std::string(row.fName) + " with " + std::to_string(row.fTypes.size()) +
                     " types");
        Virelo::IModuleInfo* info = nullptr;
        const Virelo::VireloFunction function = Virelo::GetFunction_(
            &host.Context(), row.fName, static_cast<unsigned int>(row.fTypes.size()),
            row.fTypes.data(), info);
        if (!row.fSymbol) {
            EXPECT_EQ(function, nullptr);
            continue;
        }
        EXPECT_EQ(function, host.GetRegistry().FindSymbol(row.fSymbol)->fFunction);
        EXPECT_EQ(info, host.Modules().front()->Info());
    }
}

TEST(Host, CallsRecordStatusWordsAndErrorReports) {
    std::ostringstream diagnostics;
    vhost::Host host(diagnostics);
    std::string error;
    ASSERT_TRUE(host.LoadModule(VHOST_TEST_MODULE, error)) << error;
    const vhost::Registry& registry = host.GetRegistry();
    vhost::HostContext& context = host.Context();

    // A missing argument: the status word becomes the last error, once.
    const vhost::RegisteredFunction& add = *registry.FindSymbol("vt_AddNumbers");
    AutoRefPtr<vhost::HostVariant> result = vhost::Host::CreateResult(add.fReturn);
    AutoRefPtr<vhost::HostVariant> one = vhost::HostVariant::FromNumber(1);
    EXPECT_EQ(host.Call(add, {one.Get()}, result.Get()), 0x20001u);
    EXPECT_EQ(context.TakeLastError(), "status 131073");
    EXPECT_EQ(context.TakeLastError(), "");

    // A report is recorded, written with its call site unless quiet, and visible to the
    // call that made it.
    const vhost::RegisteredFunction& fail = *registry.FindSymbol("vt_Fail");
    AutoRefPtr<vhost::HostVariant> message = vhost::HostVariant::FromString("bad thing");
    result = vhost::Host::CreateResult(fail.fReturn);
    EXPECT_EQ(host.Call(fail, {message.Get()}, result.Get(), "t.vs", 4), 0u);
    EXPECT_STREQ(result->Interface_GetStringData(), "011 bad thing");
    EXPECT_EQ(diagnostics.str(), "t.vs:4: error: 2 TEST Test.Fail: bad thing\n");
    diagnostics.str("");
    EXPECT_EQ(host.Call(fail, {message.Get()}, result.Get()), 0u);
    EXPECT_EQ(diagnostics.str(), "error: 2 TEST Test.Fail: bad thing\n") << "no file, no site";
    diagnostics.str("");
    context.SetQuiet(true);
    EXPECT_EQ(host.Call(fail, {message.Get()}, result.Get(), "t.vs", 5), 0u);
    EXPECT_EQ(diagnostics.str(), "");
    ASSERT_EQ(context.Reports().size(), 3u);
    EXPECT_EQ(context.TakeLastError(), "2 TEST Test.Fail: bad thing");

    // The call site reaches the call-stack text and the logger.
    const vhost::RegisteredFunction& where = *registry.FindSymbol("vt_Where");
    result = vhost::Host::CreateResult(where.fReturn);
    EXPECT_EQ(host.Call(where, {}, result.Get(), "dir/t.vs", 12), 0u);
    EXPECT_STREQ(result->Interface_GetStringData(), "dir/t.vs:12 value=12");
    EXPECT_NE(diagnostics.str().find("log: debug 3, line 12: where: asked\n"), std::string::npos);

    // Calling an unavailable entry is refused before reaching the module.
    const vhost::RegisteredFunction& gone = *registry.FindSymbol("vt_NotExported");
    EXPECT_THROW(host.Call(gone, {message.Get()}, result.Get()), vhost::ModuleFault);
}

TEST(HostContext, TextGettersReportTheLengthAndWriteWhatFits) {
    char buffer[8];
    std::fill(std::begin(buffer), std::end(buffer), 'x');
    EXPECT_EQ(vhost::CopyTextOut("abc", buffer, 8), 3u);
    EXPECT_EQ(std::string(buffer), "abc");
    std::fill(std::begin(buffer), std::end(buffer), 'x');
    EXPECT_EQ(vhost::CopyTextOut("abcdefgh", buffer, 8), 8u); // fits without its NUL
    EXPECT_EQ(std::string(buffer, 8), "abcdefgh");
    std::fill(std::begin(buffer), std::end(buffer), 'x');
    EXPECT_EQ(vhost::CopyTextOut("abcdefghij", buffer, 4), 10u);
    EXPECT_EQ(std::string(buffer, 8), "abcdxxxx");
    EXPECT_EQ(vhost::CopyTextOut("abc", nullptr, 0), 3u);
}
