// simdjson (DOM API), an extra reference rather than a peer: its parser is made once and
// reused, as its interface intends, and reads a padded copy of the input made outside the
// timing. Parse, visit, compact write (simdjson::minify of the element), heap held.
#include "bench/common/BenchSupport.h"

#include <simdjson.h>

#include <memory>

namespace bench {

namespace {

const char* const sLibrary = "simdjson";

void Visit(simdjson::dom::element element, DocStats& stats) {
    switch (element.type()) {
    case simdjson::dom::element_type::NULL_VALUE:
        ++stats.fNulls;
        break;
    case simdjson::dom::element_type::BOOL:
        ++(element.get_bool().value_unsafe() ? stats.fTrues : stats.fFalses);
        break;
    case simdjson::dom::element_type::INT64:
        stats.AddInteger(element.get_int64().value_unsafe());
        break;
    case simdjson::dom::element_type::UINT64:
        stats.AddUnsigned(element.get_uint64().value_unsafe());
        break;
    case simdjson::dom::element_type::DOUBLE:
        stats.AddReal(element.get_double().value_unsafe());
        break;
    case simdjson::dom::element_type::STRING:
        stats.AddString(element.get_string().value_unsafe().size());
        break;
    case simdjson::dom::element_type::ARRAY: {
        ++stats.fArrays;
        const simdjson::dom::array array = element.get_array().value_unsafe();
        for (simdjson::dom::element child : array) Visit(child, stats);
        break;
    }
    case simdjson::dom::element_type::OBJECT: {
        ++stats.fObjects;
        const simdjson::dom::object object = element.get_object().value_unsafe();
        for (simdjson::dom::key_value_pair field : object) {
            stats.AddKey(field.key.size());
            Visit(field.value, stats);
        }
        break;
    }
    }
}

// A reused parser and the padded copies of the inputs it reads (keyed by input address).
struct Reader {
    std::shared_ptr<simdjson::dom::parser> fParser = std::make_shared<simdjson::dom::parser>();
    std::shared_ptr<std::vector<std::pair<const std::string*, simdjson::padded_string>>> fPadded =
        std::make_shared<std::vector<std::pair<const std::string*, simdjson::padded_string>>>();

    void Prepare(const Corpus& corpus) {
        for (const Input& input : corpus.fFiles)
            fPadded->emplace_back(&input.fText, simdjson::padded_string(input.fText));
        for (const Input& input : corpus.fLinear)
            fPadded->emplace_back(&input.fText, simdjson::padded_string(input.fText));
    }
    simdjson::dom::element operator()(const std::string& text) const {
        for (const auto& [source, padded] : *fPadded) {
            if (source != &text) continue;
            simdjson::dom::element root;
            if (fParser->parse(padded).get(root)) Fail("simdjson: a parse failed");
            return root;
        }
        Fail("simdjson: no padded copy of an input");
    }
};

void RegisterWriteArea(const Corpus& corpus) {
    for (const Input& input : corpus.fFiles) {
        // A parser of its own per document: the element lives in its parser.
        auto parser = std::make_shared<simdjson::dom::parser>();
        simdjson::dom::element root;
        if (parser->parse(input.fText).get(root)) Fail("simdjson: a parse failed");
        ExpectSameText(sLibrary, input, "compact output", simdjson::minify(root));
        AddThroughput("WriteCompact", input, sLibrary, [parser, root] {
            std::string out = simdjson::minify(root);
            benchmark::DoNotOptimize(out.data());
        });
    }
}

} // namespace

void RegisterSimdJson(EArea area, const Corpus& corpus) {
    switch (area) {
    case EArea::kParse: {
        Reader reader;
        reader.Prepare(corpus);
        return RegisterParseFamily(corpus, sLibrary, reader,
                                   [](simdjson::dom::element root, DocStats& stats) {
                                       Visit(root, stats);
                                   });
    }
    case EArea::kWrite:
        return RegisterWriteArea(corpus);
    case EArea::kMemory:
        for (const Input& input : corpus.fFiles) {
            AddMemory(input, sLibrary, [&input] {
                auto parser = std::make_unique<simdjson::dom::parser>();
                simdjson::dom::element root;
                if (parser->parse(input.fText).get(root)) Fail("simdjson: a parse failed");
                return parser;
            });
        }
        return;
    case EArea::kMsgPack:
    case EArea::kTree:
        return;
    }
}

} // namespace bench
