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
    result["translation"] = json_of(rules.translation);
    result["translation_uncertainty"] = json_of(rules.translation_uncertainty);
    result["rotation"] = json_of(rules.rotation);
    result["rotation_uncertainty"] = json_of(rules.rotation_uncertainty);
    return result;
}

}  // namespace tools
