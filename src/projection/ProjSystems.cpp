#include "projection/ProjSystems.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <memory>
#include <mutex>
#include <utility>

#include "projection/UtmZone.h"

namespace tidora {
namespace {

struct ContextCloser {
    void operator()(PJ_CONTEXT* context) const noexcept { proj_context_destroy(context); }
};
struct SystemCloser {
    void operator()(PJ* system) const noexcept { proj_destroy(system); }
};
using Context = std::unique_ptr<PJ_CONTEXT, ContextCloser>;
using System = std::unique_ptr<PJ, SystemCloser>;

/// PROJ without network access, and silent: a system that cannot be built shows in the results.
Context MakeContext() {
    Context context(proj_context_create());
    proj_context_set_enable_network(context.get(), 0);
    proj_log_level(context.get(), PJ_LOG_NONE);
    return context;
}

/// What was built, null where PROJ could not: that, too, is asked for once.
struct Built {
    std::mutex guard;
    Context context = MakeContext();                   // before what belongs to it, and so destroyed after it
    std::map<std::string, System> systems;             ///< by definition
    std::map<std::pair<PJ*, PJ*>, System> operations;  ///< by geographic and plane system
};

/// The one static object of this room beside the two handles of mapproject.cpp. Made when it is first asked for: a run
/// on plane grids never is.
Built& Everything() {
    static Built built;
    return built;
}

/// Requires: the lock is held.
PJ* OperationBetween(Built& built, PJ* geographic, PJ* plane) {
    if (geographic == nullptr || plane == nullptr) {
        return nullptr;
    }
    const auto [found, isNew] = built.operations.try_emplace({geographic, plane});
    if (isNew) {
        found->second.reset(proj_create_crs_to_crs_from_pj(built.context.get(), geographic, plane, nullptr, nullptr));
    }
    return found->second.get();
}

}  // namespace

std::string UtmDefinition(int zone) {
    return "+proj=utm +zone=" + std::to_string(zone) + " +ellps=GRS80 +towgs84=0,0,0,0,0,0,0 +units=m +no_defs";
}

PJ* SystemOf(const std::string& definition) {
    Built& built = Everything();
    const std::lock_guard<std::mutex> lock(built.guard);
    const auto [found, isNew] = built.systems.try_emplace(definition);
    if (isNew) {
        found->second.reset(proj_create(built.context.get(), (definition + " +type=crs").c_str()));
    }
    return found->second.get();
}

void ConvertPoints(PJ* geographic, PJ* plane, PJ_DIRECTION direction, std::size_t count, double* first,
                   double* second) {
    Built& built = Everything();
    const std::lock_guard<std::mutex> lock(built.guard);
    PJ* const operation = OperationBetween(built, geographic, plane);
    if (operation == nullptr) {
        std::fill_n(first, count, HUGE_VAL);
        std::fill_n(second, count, HUGE_VAL);
        return;
    }
    proj_trans_generic(operation, direction, first, sizeof(double), count, second, sizeof(double), count, nullptr, 0, 0,
                       nullptr, 0, 0);
}

void ProjectPoints(PJ* geographic, PJ* plane, std::size_t count, const double* lonDeg, const double* latDeg, double* x,
                   double* y) {
    std::transform(lonDeg, lonDeg + count, x, LowerLongitude);
    std::copy_n(latDeg, count, y);
    ConvertPoints(geographic, plane, PJ_FWD, count, x, y);
}

}  // namespace tidora
