#include "mvdb/sentence.h"

#include <limits>
#include <optional>
#include <string>
#include <utility>

#include "base/error.h"

namespace mvdb {
namespace {

constexpr std::size_t kQuotedCharacters = 200;
constexpr std::string_view kAfterValue = "AND AVEC, PAR, PAR-DECR ou fin de phrase";

bool isBlank(char c) {
    return c == ' ' || c == '\t';
}
bool isDigit(char c) {
    return c >= '0' && c <= '9';
}
bool isLetter(char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}
bool isNameCharacter(char c) {
    return isLetter(c) || isDigit(c) || c == '_';
}
char upper(char c) {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

// Users count characters, not bytes: a UTF-8 continuation byte does not start a character. Invalid
// UTF-8 still gets a position, only a less meaningful one.
bool startsCharacter(char c) {
    return (static_cast<unsigned char>(c) & 0xC0) != 0x80;
}

std::size_t characterPosition(std::string_view text, std::size_t offset) {
    std::size_t position = 1;
    for (std::size_t i = 0; i < offset && i < text.size(); ++i)
        position += startsCharacter(text[i]) ? 1 : 0;
    return position;
}

// The sentence between French quotes, cut after its first 200 characters so that a pasted page
// does not become the message.
std::string quoted(std::string_view text) {
    std::size_t characters = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (startsCharacter(text[i]) && ++characters > kQuotedCharacters) {
            return "« " + std::string(text.substr(0, i)) + "… »";
        }
    }
    return "« " + std::string(text) + " »";
}

// A number of digits only that fits an int32; nullopt otherwise (sign, letters, overflow, empty).
std::optional<std::int32_t> parseAttributeNumber(std::string_view digits) {
    if (digits.empty()) return std::nullopt;
    std::int64_t number = 0;
    for (const char c : digits) {
        if (!isDigit(c)) return std::nullopt;
        number = number * 10 + (c - '0');
        if (number > std::numeric_limits<std::int32_t>::max()) return std::nullopt;
    }
    return static_cast<std::int32_t>(number);
}

// One pass over the sentence, left to right, with no backtracking beyond a keyword's length.
// Offsets are bytes; they become character positions only in messages and in Condition.position.
class Parser {
public:
    explicit Parser(std::string_view text) : m_text(text) {}

    Sentence parse() {
        Sentence sentence;
        skipBlanks();
        if (!takeKeyword("SELECT")) failExpected("SELECT");
        skipBlanks();
        sentence.file = takeFileName();
        skipBlanks();
        std::string_view expectedNext = "AVEC";
        if (takeKeyword("AVEC")) {
            sentence.conditions.push_back(takeCondition());
            for (skipBlanks(); takeKeyword("AND"); skipBlanks()) {
                skipBlanks();
                if (!takeKeyword("AVEC")) failExpected("AVEC");
                sentence.conditions.push_back(takeCondition());
            }
            expectedNext = kAfterValue;
        }
        sentence.sort = takeSort();
        skipBlanks();
        if (m_pos < m_text.size()) failExpected(sentence.sort ? "fin de phrase" : expectedNext);
        return sentence;
    }

private:
    [[noreturn]] void fail(std::size_t offset, std::string_view problem) const {
        throw base::Error(base::codes::kSentence, "Phrase incorrecte à la position " +
                                                      std::to_string(characterPosition(m_text, offset)) +
                                                      " : " + std::string(problem) + " dans " +
                                                      quoted(m_text));
    }

    [[noreturn]] void failExpected(std::string_view expected) const {
        fail(m_pos, std::string(expected) + " attendu");
    }

    void skipBlanks() {
        while (m_pos < m_text.size() && isBlank(m_text[m_pos]))
            ++m_pos;
    }

    // A keyword is a whole word: any case, then a blank or the end of the sentence.
    bool keywordAt(std::size_t offset, std::string_view word) const {
        if (offset > m_text.size() || m_text.size() - offset < word.size()) return false;
        for (std::size_t i = 0; i < word.size(); ++i) {
            if (upper(m_text[offset + i]) != word[i]) return false;
        }
        const std::size_t after = offset + word.size();
        return after == m_text.size() || isBlank(m_text[after]);
    }

    bool takeKeyword(std::string_view word) {
        if (!keywordAt(m_pos, word)) return false;
        m_pos += word.size();
        return true;
    }

    std::string takeFileName() {
        const std::size_t start = m_pos;
        while (m_pos < m_text.size() && isNameCharacter(m_text[m_pos]))
            ++m_pos;
        if (m_pos == start) failExpected("nom de fichier");
        return std::string(m_text.substr(start, m_pos - start));
    }

    Field takeField() {
        const std::size_t start = m_pos;
        if (m_pos < m_text.size() && isDigit(m_text[m_pos])) {
            while (m_pos < m_text.size() && isDigit(m_text[m_pos]))
                ++m_pos;
            const auto number = parseAttributeNumber(m_text.substr(start, m_pos - start));
            if (!number) fail(start, "numéro d'attribut trop grand");
            return Field{*number, {}};
        }
        if (m_pos < m_text.size() && isLetter(m_text[m_pos])) {
            while (m_pos < m_text.size() && isNameCharacter(m_text[m_pos]))
                ++m_pos;
            return Field{-1, std::string(m_text.substr(start, m_pos - start))};
        }
        failExpected("champ");
    }

    CompareOp takeOperator() {
        static constexpr std::pair<std::string_view, CompareOp> kOperators[] = {
            {"<=", CompareOp::LessOrEqual}, {">=", CompareOp::GreaterOrEqual}, {"<>", CompareOp::NotEqual},
            {"<", CompareOp::Less},         {">", CompareOp::Greater},         {"=", CompareOp::Equal},
        };
        for (const auto& [symbol, op] : kOperators) {
            if (m_text.substr(m_pos).starts_with(symbol)) {
                m_pos += symbol.size();
                return op;
            }
        }
        failExpected("opérateur (= < > <= >= <>)");
    }

    // The closing quote is the first one that something legal can follow: the end, a blank, or AND
    // or PAR glued to it. Any other quote belongs to the value, so a name typed with a quote in it
    // (O"BRIEN) needs no escaping.
    std::size_t closingQuote(std::size_t from) const {
        for (std::size_t quote = m_text.find('"', from); quote != std::string_view::npos;
             quote = m_text.find('"', quote + 1)) {
            const std::size_t after = quote + 1;
            if (after == m_text.size() || isBlank(m_text[after]) || keywordAt(after, "AND") ||
                keywordAt(after, "PAR") || keywordAt(after, "PAR-DECR")) {
                return quote;
            }
        }
        return std::string_view::npos;
    }

    void takeValue(Condition& condition) {
        if (m_pos >= m_text.size() || m_text[m_pos] != '"') failExpected("valeur entre guillemets");
        const std::size_t open = m_pos;
        const std::size_t close = closingQuote(open + 1);
        if (close == std::string_view::npos) fail(open, "guillemet fermant attendu");
        std::string_view value = m_text.substr(open + 1, close - open - 1);
        m_pos = close + 1;
        if (value.ends_with(']')) {
            if (condition.op != CompareOp::Equal && condition.op != CompareOp::NotEqual) {
                fail(close - 1, "« ] » ne s'emploie qu'avec = ou <>");
            }
            value.remove_suffix(1);
            condition.prefix = true;
        }
        condition.value = std::string(value);
    }

    Condition takeCondition() {
        Condition condition;
        skipBlanks();
        condition.position = characterPosition(m_text, m_pos);
        condition.field = takeField();
        skipBlanks();
        condition.op = takeOperator();
        skipBlanks();
        takeValue(condition);
        return condition;
    }

    std::optional<SortSpec> takeSort() {
        SortSpec sort;
        if (takeKeyword("PAR-DECR")) {
            sort.order = SortOrder::Descending;
        } else if (!takeKeyword("PAR")) {
            return std::nullopt;
        }
        skipBlanks();
        sort.position = characterPosition(m_text, m_pos);
        sort.field = takeField();
        return sort;
    }

    std::string_view m_text;
    std::size_t m_pos = 0;
};

}  // namespace

Sentence parseSentence(std::string_view text) {
    return Parser(text).parse();
}

std::vector<std::int32_t> parseAttributeList(std::string_view text) {
    std::vector<std::int32_t> attributes;
    std::size_t pos = 0;
    for (;;) {
        while (pos < text.size() && isBlank(text[pos]))
            ++pos;
        if (pos == text.size()) break;
        const std::size_t start = pos;
        while (pos < text.size() && !isBlank(text[pos]))
            ++pos;
        const auto number = parseAttributeNumber(text.substr(start, pos - start));
        if (!number) {
            throw base::Error(base::codes::kSentence, "Liste d'attributs incorrecte : " + quoted(text));
        }
        attributes.push_back(*number);
    }
    if (attributes.empty()) throw base::Error(base::codes::kSentence, "Liste d'attributs vide");
    return attributes;
}

}  // namespace mvdb
