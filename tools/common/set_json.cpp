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
                   const sgn::proof& signs, std::span<const std::string> names) {
    const auto named = [&](const std::vector<std::size_t>& jobs) {
        json_value files = json_value::array();
        for (const std::size_t job : jobs) files.push_back(names[job]);
        return files;
    };
    const auto all_named = [&](std::span<const std::vector<std::size_t>> guesses) {
        json_value files = json_value::array();
        for (const auto& jobs : guesses) files.push_back(named(jobs));
        return files;
    };
    const std::span flips(suspects.flips);
    json_value result = json_of(rules);
    result["suspects"] = flips.empty() ? json_value::array() : named(flips.front());
    result["alternatives"] = flips.empty() ? json_value::array() : all_named(flips.subspan(1));
    result["unsound"] = suspects.unsound;
    result["unseen"] = named(signs.unseen);
    result["unseen_error"] = signs.largest_error;
    result["reference_unseen"] = signs.reference_unseen;
    result["as_good"] = all_named(signs.as_good);
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
