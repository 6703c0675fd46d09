// Formatting inputs. Memory: an input's text is released as soon as it is parsed, and output
// leaves through a ChunkedOutput in pieces of 64 KiB, so a document is never held as text
// next to its tree (at most the input text and the tree while parsing).
#include "tools/jsonfmt/Formatter.h"

#include "tools/jsonfmt/DocumentReader.h"
#include "tools/jsonfmt/InputFile.h"
#include "tools/jsonfmt/MeaningCheck.h"
#include "tools/jsonfmt/OutputFile.h"

#include "json/ChunkedOutput.h"
#include "json/msgpack/MsgPackStreamWriter.h"
#include "json/text/TextStreamWriter.h"

#include <algorithm>
#include <filesystem>
#include <ostream>

namespace jsonfmt {

namespace {

void Report(std::ostream& errors, const std::string& name, const Problem& problem) {
    errors << name << problem.fWhere << ": " << problem.fMessage << '\n';
}

// False when a string or container is too long for MessagePack.
bool WriteDocument(const JsonValue& root, const Options& options, ChunkedOutput& out) {
    if (options.fToMsgPack) return MsgPackStreamWriter::Write(root, out, options.fSortKeys);
    TextStreamOptions text;
    text.fWriter.fStandard = true;
    text.fPretty = !options.fCompact;
    text.fIndent = options.fIndent;
    text.fSortKeys = options.fSortKeys;
    TextStreamWriter::Write(root, out, text);
    out.Buffer() += '\n';
    out.Flush();
    return true;
}

int FormatOne(const std::string& path, const Options& options, ChunkedOutput& out,
              std::ostream& errors) {
    std::string bytes;
    std::string reason;
    if (!ReadWholeInput(path, bytes, reason)) {
        errors << "jsonfmt: cannot read " << path << ": " << reason << '\n';
        return kTrouble;
    }
    Problem problem;
    JsonAutoRefPtr<JsonValue> root =
        options.fFromMsgPack ? ReadMsgPackDocument(bytes, problem) : ReadTextDocument(bytes, problem);
    std::string().swap(bytes); // the tree holds the document now
    if (!root || !CheckMeaningCarries(*root, options.fFromMsgPack, options.fToMsgPack, problem)) {
        Report(errors, path, problem);
        return kInvalid;
    }
    if (options.fCheck) return kSuccess;
    if (!WriteDocument(*root, options, out)) {
        Report(errors, path, {"", "a string or container is too long for MessagePack"});
        return kInvalid;
    }
    return kSuccess;
}

// The output is opened at the first write, after the first input was read: an input after
// the first that is the output file would be read emptied or half written.
bool OutputIsALaterInput(const Options& options, std::ostream& errors) {
    if (options.fOutputPath.empty() || options.fOutputPath == "-") return false;
    for (size_t i = 1; i < options.fInputs.size(); ++i) {
        std::error_code ignored; // false for files that do not exist
        if (options.fInputs[i] != "-" && std::filesystem::equivalent(options.fOutputPath, options.fInputs[i], ignored)) {
            errors << "jsonfmt: the output " << options.fOutputPath << " is also the input "
                   << options.fInputs[i] << ", which would be emptied before it is read\n";
            return true;
        }
    }
    return false;
}

} // namespace

int Format(const Options& options, std::ostream& errors) {
    if (OutputIsALaterInput(options, errors)) return kTrouble;
    OutputFile output(options.fOutputPath);
    ChunkedOutput out([&](std::string_view piece) { output.Write(piece); });
    int status = kSuccess;
    try {
        for (const std::string& path : options.fInputs)
            status = std::max(status, FormatOne(path, options, out, errors));
        output.Close();
    } catch (const WriteError& failure) {
        errors << "jsonfmt: " << failure.what() << '\n';
        return kTrouble;
    }
    return status;
}

int PrintToStandardOutput(const std::string& text, std::ostream& errors) {
    OutputFile output("-");
    try {
        output.Write(text);
        output.Close();
    } catch (const WriteError& failure) {
        errors << "jsonfmt: " << failure.what() << '\n';
        return kTrouble;
    }
    return kSuccess;
}

} // namespace jsonfmt
