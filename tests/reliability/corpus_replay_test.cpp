#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>

#include "entries.h"

namespace {

// Each file of fuzz/corpus/<target>/ through the entry its fuzzer feeds: none may crash, and the
// sanitizers of the suite's build watch them as libFuzzer's did.
TEST(CorpusReplay, EveryKeptInputGoesThroughItsEntry) {
    const struct {
        const char* target;
        std::function<void(std::string_view)> entry;
    } targets[] = {
        {"sentence", fuzz::sentence},
        {"record", fuzz::record},
        {"load_line", fuzz::loadLine},
        {"play_lines", fuzz::playLines},
    };
    for (const auto& t : targets) {
        int files = 0;
        for (const auto& file :
             std::filesystem::directory_iterator(std::string(ZANDOREL_CORPUS) + "/" + t.target)) {
            SCOPED_TRACE(file.path().string());
            std::ifstream in(file.path(), std::ios::binary);
            t.entry(std::string(std::istreambuf_iterator<char>(in), {}));
            ++files;
        }
        EXPECT_GT(files, 0) << t.target;
    }
}

}  // namespace
