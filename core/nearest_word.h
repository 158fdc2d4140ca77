// The right word that somebody may have meant by a wrong one.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace vexa {

// The one of `words` that somebody meant: of numbers the one that is nearest by value; one that begins with
// `word`, the shortest; else the one that takes the fewest characters changed, added or left out to become.
// Letter case counts little. `words` is not empty.
const std::string& NearestWord(std::string_view word, const std::vector<std::string>& words);
// "; the nearest is \"WORD\"", to stand behind what is wrong with `word`; empty when there are no words.
std::string NearestText(std::string_view word, const std::vector<std::string>& words);

}  // namespace vexa
