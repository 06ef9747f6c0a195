#include "sgn/set/centre.h"

#include <vector>

#include "flib/io/stop_run.h"

namespace sgn {
namespace {

/// Sum of the squares of the distances of all atoms.
double distance2(const std::vector<vec3>& a, const std::vector<vec3>& b) {
    double sum = 0;
    for (std::size_t i = 0; i < a.size(); ++i) {
        const double apart = length(difference(a[i], b[i]));
        sum += apart * apart;
    }
    return sum;
}

/// How many of all files but `centre` lie in pairs around it.
std::size_t paired_around(const std::vector<const result_file*>& all, std::size_t centre) {
    std::vector<result_file> others;
    for (std::size_t i = 0; i < all.size(); ++i) {
        if (i != centre) others.push_back(*all[i]);
    }
    return 2 * make_set(*all[centre], others).pairs;
}

}  // namespace

std::optional<std::size_t> better_reference(const result_file& reference,
                                            std::span<const result_file> files) {
    const std::size_t atoms = reference.contents.x.size();
    std::vector<const result_file*> all{&reference};
    for (const result_file& each : files) {
        if (each.contents.x.size() != atoms) return {};
        all.push_back(&each);
    }
    std::vector<vec3> mean(atoms);
    for (const result_file* each : all) {
        for (std::size_t i = 0; i < atoms; ++i) {
            mean[i] =
                sum(mean[i], scaled(1 / static_cast<double>(all.size()), each->contents.x[i]));
        }
    }
    std::size_t nearest = 0;
    double least = distance2(reference.contents.x, mean);
    for (std::size_t i = 1; i < all.size(); ++i) {
        const double distance = distance2(all[i]->contents.x, mean);
        if (!(distance < least)) continue;
        least = distance;
        nearest = i;
    }
    if (nearest == 0) return {};
    try {
        const std::size_t half = (all.size() - 1) / 2;
        if (paired_around(all, nearest) <= half || paired_around(all, 0) > half) return {};
    } catch (const flib::run_error&) {
        return {};  // told where the set is put together
    }
    return nearest - 1;
}

std::string better_reference_text(const result_file& reference,
                                  std::span<const result_file> files) {
    const auto better = better_reference(reference, files);
    if (!better) return {};
    return flib::printable(reference.name) +
           " does not look like the reference: " + flib::printable(files[*better].name) +
           " does, the other files lie in pairs around it. The reference comes first.";
}

}  // namespace sgn
