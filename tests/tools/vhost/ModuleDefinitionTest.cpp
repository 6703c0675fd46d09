// The definition-text reader: a well-formed text read entry by entry, the free white space it
// allows, and malformed texts refused with the entry and what was expected.
#include "tools/vhost/host/ModuleDefinition.h"

#include <gtest/gtest.h>

#include <string>

using vhost::ModuleDefinition;
using vhost::ParseModuleDefinition;

TEST(ModuleDefinition, ReadsTypesFunctionsAndParameterLists) {
    const std::string text =
        " TYPE JSON : virelo_module_CreateJSONObj : THREADSAFE"
        " CONST_FUNCTION STRING ToString (JSON) : virelo_module_JsonToString"
        " CONST_FUNCTION STRING ToFormattedString (JSON,STRING) : "
        "virelo_module_JsonToFormattedString"
        " CONST_FUNCTION JSON JSON.CreateEmptyArray () : virelo_module_CreateEmptyArray"
        " CONST_FUNCTION JSON JSON.GetSubNode (JSON,VECTOR<STRING>) : "
        "virelo_module_GetFromNodeVector"
        " TYPE OTHER : make_other :";
    ModuleDefinition definition;
    std::string error;
    ASSERT_TRUE(ParseModuleDefinition(text, definition, error)) << error;
    ASSERT_EQ(definition.fTypes.size(), 2u);
    EXPECT_EQ(vhost::FormatTypeEntry(definition.fTypes[0]),
              "TYPE JSON : virelo_module_CreateJSONObj : THREADSAFE");
    EXPECT_TRUE(definition.fTypes[1].fAttributes.empty());
    ASSERT_EQ(definition.fFunctions.size(), 4u);
    EXPECT_TRUE(definition.fFunctions[2].fParameters.empty());
    const vhost::FunctionEntry& last = definition.fFunctions[3];
    EXPECT_EQ(last.fReturnType, "JSON");
    EXPECT_EQ(last.fName, "JSON.GetSubNode");
    EXPECT_EQ(last.fParameters, (std::vector<std::string>{"JSON", "VECTOR<STRING>"}));
    EXPECT_EQ(last.fSymbol, "virelo_module_GetFromNodeVector");
    EXPECT_EQ(vhost::FormatFunctionEntry(definition.fFunctions[1]),
              "CONST_FUNCTION STRING ToFormattedString (JSON,STRING) : "
              "virelo_module_JsonToFormattedString");
}

TEST(ModuleDefinition, AllowsFreeWhiteSpaceAndAnEmptyText) {
    ModuleDefinition definition;
    std::string error;
    EXPECT_TRUE(ParseModuleDefinition("", definition, error));
    EXPECT_TRUE(ParseModuleDefinition(" \t\n", definition, error));
    ASSERT_TRUE(ParseModuleDefinition("CONST_FUNCTION NUMBER  F\n( NUMBER , STRING )\t:f",
                                      definition, error))
        << error;
    ASSERT_EQ(definition.fFunctions.size(), 1u);
    EXPECT_EQ(definition.fFunctions[0].fParameters.size(), 2u);
}

struct BadDefinition {
    const char* fName;
    std::string fText;
    std::string fError;
};

// clang-format off
static const BadDefinition sBadDefinitions[] = {
    {"unknown keyword", " FUNCTION STRING F () : f", "entry 1: expected TYPE or CONST_FUNCTION, found 'FUNCTION'"},
    {"second entry counted", " TYPE A : a : X CONST_FUNCTION", "entry 2: expected the return type, found the end of the text"},
    // TYPE entries
    {"type without name", " TYPE : f : X", "entry 1: expected a type name, found ':'"},
    {"type without colon", " TYPE A f : X", "entry 1: expected ':' after the type name, found 'f'"},
    {"type without factory", " TYPE A : : X", "entry 1: expected the factory symbol, found ':'"},
    {"type cut short", " TYPE A : f", "entry 1: expected ':' after the factory symbol, found the end of the text"},
    {"bad attribute", " TYPE A : f : X,Y", "entry 1: expected an attribute, found ','"},
    // function entries
    {"bad return type", " CONST_FUNCTION VECTOR<> F () : f", "entry 1: expected the return type, found 'VECTOR<>'"},
    {"bad name", " CONST_FUNCTION STRING A..B () : f", "entry 1: expected the function name, found 'A..B'"},
    {"no parameter list", " CONST_FUNCTION STRING F : f", "entry 1: expected '(' after the function name, found ':'"},
    {"empty parameter", " CONST_FUNCTION STRING F (STRING,) : f", "entry 1: expected a parameter type, found ')'"},
    {"unclosed list", " CONST_FUNCTION STRING F (STRING : f", "entry 1: expected ',' or ')' in the parameter list, found ':'"},
    {"no symbol colon", " CONST_FUNCTION STRING F () f", "entry 1: expected ':' after the parameter list, found 'f'"},
    {"no symbol", " CONST_FUNCTION STRING F () :", "entry 1: expected the function symbol, found the end of the text"},
    {"dotted symbol", " CONST_FUNCTION STRING F () : a.b", "entry 1: expected the function symbol, found 'a.b'"},
    // bytes no token accepts are shown, control bytes masked
    {"stray character", " CONST_FUNCTION STRING F () : f ;", "entry 2: expected TYPE or CONST_FUNCTION, found ';'"},
    {"control byte", std::string(" TYPE A : f : \x01"), "entry 1: expected an attribute, found '?'"},
};
// clang-format on

TEST(ModuleDefinition, RefusesMalformedTextsNamingEntryAndExpectation) {
    for (const BadDefinition& row : sBadDefinitions) {
        SCOPED_TRACE(row.fName);
        ModuleDefinition definition;
        std::string error;
        EXPECT_FALSE(ParseModuleDefinition(row.fText, definition, error));
        EXPECT_EQ(error, row.fError);
    }
}
