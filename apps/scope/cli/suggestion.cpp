#include "cli/suggestion.h"

#include <algorithm>
#include <numeric>

namespace scope {

namespace {

/// How many letters to insert, drop or replace (Levenshtein distance); a replaced letter counts once.
std::size_t distance(const std::string& a, const std::string& b)
{
    std::vector<std::size_t> row(b.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 0; i < a.size(); ++i) {
        std::size_t diagonal = row[0];
        row[0] = i + 1;
        for (std::size_t j = 0; j < b.size(); ++j) {
            const std::size_t replaced = diagonal + (a[i] == b[j] ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({replaced, row[j] + 1, row[j + 1] + 1});
        }
    }
    return row.back();
}

} // namespace

std::string suggestion(const std::string& word, const std::vector<std::string>& known)
{
    constexpr std::size_t kLongest = 64; // nobody mistypes more
    std::size_t least = std::min<std::size_t>(2, word.size() / 2) + 1;
    const std::string* nearest = nullptr;
    for (const std::string& each : known) {
        const std::size_t letters = word.size() > kLongest || each.size() > kLongest ? least : distance(word, each);
        const bool begun = word.size() >= 2 && each.starts_with(word);
        if (letters < least || (begun && nearest == nullptr)) {
            least = std::min(least, letters);
            nearest = &each;
        }
    }
    return nearest != nullptr ? "; did you mean '" + *nearest + "'?" : "";
}

} // namespace scope
