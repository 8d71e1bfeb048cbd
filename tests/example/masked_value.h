// Masks single values as the host does: a rule, the provider's module, a request, its errors.
#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <clocale>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "host/host_error.h"
#include "host/provider_loader.h"
#include "host/request.h"
#include "support/heap.h"
#include "text/utf8_text.h"

// Hears errors as "code NAME=text NAME=text", without the names' common prefix and the column.
class Listener : public host::ErrorListener {
  public:
    void error(const host::Provider& provider, const ErrorRecord& record) override {
        EXPECT_EQ(static_cast<uint32_t>(provider.number), record.secondCode);
        std::string text = std::to_string(record.firstCode);
        for (int i = 0; i < record.tokenSlotCount; ++i) {
            const TokenSlot& slot = record.tokenSlots[i];
            const std::string name = text::toUtf8(gTokenIds[slot.tokenId]).substr(11);
            const std::string value = slot.text == nullptr ? "?" : text::toUtf8(slot.text);
            if (i == 0) {
                EXPECT_EQ("COLNAME=Col", name + "=" + value);
            } else {
                text += " " + name + "=" + value;
            }
        }
        last = text;
        ++count;
    }
    void failure(const host::Provider&, int32_t status) override {
        last = "status " + std::to_string(status);
        ++count;
    }

    std::string last;
    int count = 0;
};

class MaskedValueTest : public HeapTest {
  protected:
    void SetUp() override {
        HeapTest::SetUp();
        std::setlocale(LC_CTYPE, "C.UTF-8");
        std::string pattern = testing::TempDir() + "masked_XXXXXX";
        folder_ = mkdtemp(pattern.data());
    }
    void TearDown() override {
        request_.reset();
        loader_.reset();
        EXPECT_EQ(0, std::system(("rm -rf '" + folder_ + "'").c_str()));
        std::setlocale(LC_CTYPE, "C");
        HeapTest::TearDown();
    }

    void writeFile(const std::string& name, const std::string& text) {
        std::ofstream(folder_ + "/" + name, std::ios::binary) << text;
    }

    // Makes the request for a column Col with a rule such as "CCN, key=17".
    void rule(const std::string& text) {
        request_.reset();
        writeFile("rules.txt", "COL = " + text + "\n");
        rules_ = host::readRules(folder_ + "/rules.txt");
        if (!loader_) loader_ = std::make_unique<host::ProviderLoader>(KORV_PROVIDERS);
        const host::Rule& rule = rules_.rules[0];
        request_ = std::make_unique<host::Request>(rules_, rule, loader_->load(rules_, rule), "Col",
                                                   listener_);
    }
    // Why a rule is not accepted: the provider's error, or else the host's message.
    std::string ruleError(const std::string& text) {
        listener_.last.clear();
        try {
            rule(text);
        } catch (const host::HostError& error) {
            return listener_.last.empty() ? error.what() + folder_.size() + 10 : listener_.last;
        }
        return "accepted";
    }

    // The masked value, or "error ..." as the listener has heard it.
    std::string mask(const std::string& value) {
        const int before = listener_.count;
        std::string_view masked;
        if (!request_->mask(value, masked, listener_)) {
            EXPECT_EQ(before + 1, listener_.count);
            return "error " + listener_.last;
        }
        EXPECT_EQ(before, listener_.count);
        return std::string(masked);
    }

    std::string folder_;
    host::Rules rules_;
    std::unique_ptr<host::ProviderLoader> loader_;
    std::unique_ptr<host::Request> request_;
    Listener listener_;
};
