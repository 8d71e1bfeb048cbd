// A fixture that masks single values by a rule: in both forms, by mask and by maskBatch.
#pragma once

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <clocale>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "opened_rule.h"
#include "support/heap.h"
#include "text/utf8_text.h"

// A provider's module, loaded as long as the test program runs.
inline const PrvEntry& loadProvider(std::string name) {
    if (name == "COL") name = "AFF";
    for (char& c : name) c = static_cast<char>(toportwlower(c));
    const std::string path = KORV_PROVIDERS "/libkorvprv_" + name + ".so";
    void* const module = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (module == nullptr) throw std::runtime_error(dlerror());
    const auto entry = reinterpret_cast<PrvEntryFunction>(dlsym(module, PRV_ENTRY_SYMBOL));
    return *entry();
}

class MaskedValueTest : public HeapTest {
  protected:
    void SetUp() override {
        HeapTest::SetUp();
        std::setlocale(LC_CTYPE, "C.UTF-8");
        std::string pattern = testing::TempDir() + "masked_XXXXXX";
        folder_ = mkdtemp(pattern.data());
    }
    void TearDown() override {
        rule_.reset();
        EXPECT_EQ(0, std::system(("rm -rf '" + folder_ + "'").c_str()));
        std::setlocale(LC_CTYPE, "C");
        HeapTest::TearDown();
    }

    void writeFile(const std::string& name, const std::string& text) {
        std::ofstream(folder_ + "/" + name, std::ios::binary) << text;
    }

    std::unique_ptr<OpenedRule> openRule(const std::string& text) const {
        const RuleText rule(text, folder_);
        return std::make_unique<OpenedRule>(loadProvider(rule.provider), rule);
    }

    // Opens a rule such as "CCN, method=transpose, key=17" for the values that follow.
    void rule(const std::string& text) {
        rule_.reset();
        rule_ = openRule(text);
        wideOnly_ = RuleText(text, folder_).wideOnly;
        ASSERT_EQ("", rule_->error()) << text;
    }

    // Why a rule is not accepted.
    std::string ruleError(const std::string& text) {
        const auto rule = openRule(text);
        return rule->error().empty() ? "accepted" : rule->error();
    }

    // The masked value, empty for NULL, or "error ...". Narrow and wide, alone and among others, a
    // value must have the same result. Only ASCII text has a narrow form.
    std::string mask(const std::string& value) {
        const bool ascii = text::isPlainAscii(value.data(), value.size());
        const Outcome outcome = maskAs(OpenedRule::wide, value);
        if (ascii && !wideOnly_) {
            EXPECT_EQ(outcome, maskAs(OpenedRule::narrow, value)) << value;
        }
        return outcome == "NULL" ? "" : outcome;
    }

    Outcome maskAs(OpenedRule::Form form, const std::string& value) {
        const Outcome alone = rule_->mask(form, value);
        const Outcome expected = alone.starts_with("error ") ? "error" : alone;
        const std::vector<Outcome> batch = rule_->maskBatch(form, {value, "x", value});
        EXPECT_EQ(expected, batch[0]) << value;
        EXPECT_EQ(expected, batch[2]) << value;
        return alone;
    }

    std::string folder_;
    std::unique_ptr<OpenedRule> rule_;
    bool wideOnly_ = false;
};
