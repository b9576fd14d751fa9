#include "mvdb/sort_key.h"

#include <gtest/gtest.h>

#include "base/text.h"

namespace {

// The index serves the comparison only if key order and value order agree, pair by pair.
TEST(SortKey, OrdersNumbersAsNumbersAndTextsAsBytes) {
    const std::vector<std::string> numbers = {"-100",
                                              "-12,3",
                                              "-12",
                                              "-0,5",
                                              "0",
                                              "-0",
                                              "0,001",
                                              "0,5",
                                              "08",
                                              "8",
                                              "8,5",
                                              "8.50",
                                              "9",
                                              "10",
                                              "850",
                                              "0850",
                                              "883,5",
                                              "000120000100000000100850",
                                              "000120000100000000100851",
                                              "99999999999999999999999"};
    const std::vector<std::string> texts = {"", "A", "AB", "B", "abc", "Hélène", "Z\xC3\xA9", "1E5x", "12h"};
    auto sameSign = [](int a, int b) { return (a < 0) == (b < 0) && (a == 0) == (b == 0); };
    for (const auto* group : {&numbers, &texts}) {
        for (const std::string& a : *group) {
            for (const std::string& b : *group) {
                SCOPED_TRACE(a + " vs " + b);
                EXPECT_TRUE(sameSign(mvdb::sortKey(a).compare(mvdb::sortKey(b)), base::compareValues(a, b)));
            }
        }
    }
    EXPECT_LT(mvdb::sortKey("99999"), mvdb::sortKey("")) << "every number sorts before every text";
}

TEST(SortKey, PrefixEndBoundsEveryExtension) {
    EXPECT_EQ(mvdb::prefixEnd("AB"), "AC");
    EXPECT_EQ(mvdb::prefixEnd("A\xFF"), "B");
    EXPECT_EQ(mvdb::prefixEnd("\xFF\xFF"), "");
    EXPECT_TRUE(mvdb::couldBeginNumber("0001 ,5-"));
    EXPECT_FALSE(mvdb::couldBeginNumber("INF"));
}

}  // namespace
