#include "common/set_json.h"

#include <cstddef>
#include <vector>

namespace tools {

json_value json_of(const sgn::table& rows) {
    json_value result = json_value::array();
    for (std::size_t i = 0; i < rows.rows; ++i) {
        const auto row = rows.row(i);
        result.push_back(std::vector<double>(row.begin(), row.end()));
    }
    return result;
}

json_value json_of(const sgn::sum_rules& rules) {
    json_value result{{"judged", rules.judged}};
    if (!rules.judged) {
        result["why_not"] = rules.why_not;
        result["satisfied"] = nullptr;
        return result;
    }
    result["satisfied"] = rules.satisfied;
    result["chi2"] = rules.chi2;
    result["sums"] = rules.sums;
    result["largest"] = rules.largest;
    result["largest_residue"] = rules.largest_residue;
    result["noise"] = rules.noise;
    result["step_scale"] = rules.step_scale;
    result["translation"] = json_of(rules.translation);
    result["translation_uncertainty"] = json_of(rules.translation_uncertainty);
    result["rotation"] = json_of(rules.rotation);
    result["rotation_uncertainty"] = json_of(rules.rotation_uncertainty);
    return result;
}

json_value json_of(const sgn::sum_rules& rules, const sgn::suspects& suspects,
                   std::span<const std::string> names) {
    std::vector<std::vector<std::string>> guesses;
    for (const auto& flip : suspects.flips) {
        auto& guess = guesses.emplace_back();
        for (const std::size_t job : flip) guess.push_back(names[job]);
    }
    const std::span all(guesses);
    json_value result = json_of(rules);
    result["suspects"] = all.empty() ? json_value::array() : json_value(all.front());
    result["alternatives"] = all.empty() ? json_value::array() : json_value(all.subspan(1));
    result["unsound"] = suspects.unsound;
    return result;
}

json_value json_of(std::span<const sgn::finding> findings) {
    json_value result = json_value::array();
    for (const sgn::finding& each : findings) {
        result.push_back({{"doubt", name_of(each.kind)}, {"text", each.text}});
    }
    return result;
}

}  // namespace tools
