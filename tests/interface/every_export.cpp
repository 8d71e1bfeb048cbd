// Every exported function, by the lists of exports.
#include "interface/every_export.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

void enterEveryExport(const Entry& call) {
    enterRecordExports(call);
    enterTextExports(call);
    std::set<std::string> exported;
    for (const char* path : {KORV_EXPORTS, KORV_DATACNV_EXPORTS}) {
        std::ifstream lines(path);
        for (std::string kind, name, line; std::getline(lines, line);) {
            std::istringstream words(line);
            if (words >> kind >> name && kind == "function") exported.insert(name);
        }
    }
    std::set<std::string> missing;
    for (const std::string& name : exported) {
        if (!call.entered().count(name)) missing.insert(name);
    }
    EXPECT_EQ(std::set<std::string>(), missing);
    EXPECT_EQ(exported.size(), call.entered().size());
}
