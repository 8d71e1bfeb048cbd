// What a module says of itself: its file, read here, and its tables, read by the helper, because to
// load a module is to run it.
#include "inspect.h"

#include <cstdio>
#include <stdexcept>
#include <string_view>

#include "elf_file.h"
#include "helper_process.h"
#include "json.h"

namespace kit {

namespace {

// The records of the helper: the first field is the kind, the others have these names.
struct Section {
    std::string_view kind;
    const char* title;  // of the section
    const char* name;   // in JSON
    std::vector<const char*> fields;
};

const std::vector<Section>& sections() {
    static const std::vector<Section> all = {
        {"provider", "Provider", "provider", {"name", "number", "interfaceVersion"}},
        {"functions", "Functions", "functions", {"maskBatch", "unmask"}},
        {"method", "Methods", "methods", {"name", "kind"}},
        {"operand", "Operands", "operands", {"key", "code", "kind", "minimum", "maximum", "flags"}},
        {"error", "Errors", "errors", {"code", "text"}},
        {"rule", "Sample rules and what they promise", "sampleRules", {"rule", "promises"}},
    };
    return all;
}

std::string yesNo(bool is) {
    return is ? "yes" : "no";
}

std::string joined(const std::vector<std::string>& texts) {
    std::string all;
    for (const std::string& text : texts) all += (all.empty() ? "" : ", ") + text;
    return all.empty() ? "none" : all;
}

void printLine(const char* name, const std::string& value) {
    std::printf("%-22s%s\n", name, printable(value.empty() ? "none" : value).c_str());
}

void printFile(const std::string& path, const ElfFile& file) {
    printLine("File", path);
    printLine("Word size", std::to_string(file.bits));
    printLine("Exported symbols", joined(file.exports));
    printLine("Needed libraries", joined(file.needed));
    printLine("RPATH", file.searchPath);
    printLine("Executable stack", yesNo(file.hasExecutableStack));
    printLine("Text relocations", yesNo(file.hasTextRelocations));
    printLine("Bound at start", yesNo(file.isBoundAtStart));
    printLine("Build id", file.buildId);
}

void printTables(const std::vector<Record>& records) {
    for (const Section& section : sections()) {
        bool isFirst = true;
        for (const Record& record : records) {
            if (record[0] != section.kind) continue;
            if (isFirst) std::printf("%s\n", section.title);
            isFirst = false;
            std::string line;
            for (size_t i = 0; i < section.fields.size() && i + 1 < record.size(); ++i) {
                if (record[i + 1].empty()) continue;
                line += std::string(line.empty() ? "  " : "; ") + section.fields[i] + " " +
                        record[i + 1];
            }
            std::printf("%s\n", printable(line.empty() ? "  none" : line).c_str());
        }
    }
}

std::string fileAsJson(const std::string& path, const ElfFile& file) {
    const auto truth = [](bool is) { return std::string(is ? "true" : "false"); };
    return jsonObject({{"path", jsonString(path)},
                       {"wordSize", std::to_string(file.bits)},
                       {"exports", jsonStrings(file.exports)},
                       {"needed", jsonStrings(file.needed)},
                       {"rpath", jsonString(file.searchPath)},
                       {"executableStack", truth(file.hasExecutableStack)},
                       {"textRelocations", truth(file.hasTextRelocations)},
                       {"boundAtStart", truth(file.isBoundAtStart)},
                       {"buildId", jsonString(file.buildId)}});
}

std::string asJson(const std::string& path, const ElfFile& file,
                   const std::vector<Record>& records) {
    std::vector<std::pair<std::string, std::string>> members = {{"file", fileAsJson(path, file)}};
    for (const Section& section : sections()) {
        std::vector<std::string> items;
        for (const Record& record : records) {
            if (record[0] != section.kind) continue;
            std::vector<std::pair<std::string, std::string>> fields;
            for (size_t i = 0; i < section.fields.size() && i + 1 < record.size(); ++i) {
                fields.emplace_back(section.fields[i], jsonString(record[i + 1]));
            }
            items.push_back(jsonObject(fields));
        }
        members.emplace_back(section.name, jsonArray(items));
    }
    return jsonObject(members);
}

}  // namespace

int inspect(const Options& options) {
    ElfFile file;
    try {
        file = readElfFile(options.module);
    } catch (const ElfFault& fault) {
        std::fprintf(stderr, "%s: %s\n", options.module.c_str(), fault.what());
        return kHasFindings;
    }
    const Helper helper = findHelper(file.bits, options.helpers);
    if (helper.path.empty()) throw std::runtime_error(missingHelper(options.module, file.bits));
    const HelperRun run = runHelper(helper, {options.module, "--task", "inspect"}, 60);
    const std::string end = endOf(run);
    if (options.json) {
        std::printf("%s\n", asJson(options.module, file, run.records).c_str());
    } else {
        printFile(options.module, file);
        printTables(run.records);
    }
    int status = kSound;
    for (const Record& record : run.records) {
        if (record[0] != "finding" || record.size() < 2) continue;
        std::fprintf(stderr, "%s: %s\n", options.module.c_str(), printable(record[1]).c_str());
        status = kHasFindings;
    }
    if (!end.empty()) {
        std::fprintf(stderr, "%s: %s\n", options.module.c_str(), printable(end).c_str());
        status = kHasFindings;
    }
    return status;
}

}  // namespace kit
