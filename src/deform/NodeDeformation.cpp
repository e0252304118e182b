#include "deform/NodeDeformation.h"

#include <algorithm>
#include <limits>
#include <memory>
#include <optional>

namespace tidora {
namespace {

constexpr float kAlpha = 2.0F / 3.0F;  ///< (lambda + mu) / (lambda + 2 mu) with lambda = mu

bool IsByColumn(const NodeTask& task) noexcept {
    return task.frame == NodeFrame::Utm || task.depth == DepthRule::Program;
}

SourceReach ReachOf(const FAULT_PARAM& element, const ElementSource& source, const NodeTask& task,
                    std::size_t count) noexcept {
    const std::size_t among = task.toleranceElements == 0 ? count : task.toleranceElements;
    SourceReach reach = MakeSourceReach(element, source, task.tolerance, among);
    if (!reach.isSwitched && !IsByColumn(task)) {
        reach.finite = reach.point = std::numeric_limits<float>::infinity();
    }
    return reach;
}

ElementDepth DepthOf(const FAULT_PARAM& element, DepthRule rule, std::size_t count) noexcept {
    switch (rule) {
        case DepthRule::Datum:
            return {element.baseOffset, 0.0, false, true};
        case DepthRule::Floor:
            return {element.baseOffset, element.baseOffset, true, true};
        case DepthRule::Program:
            break;
    }
    return {element.depth, element.baseOffset, count != 1, false};
}

std::vector<TileElement::Share> SharesOf(std::size_t element, std::size_t count, const float* shares,
                                         std::size_t layers) {
    std::vector<TileElement::Share> found;
    for (std::size_t layer = 0; layer < layers; ++layer) {
        const float share = shares == nullptr ? 1.0F : shares[layer * count + element];
        if (share != 0.0F) {
            found.push_back({layer, share});
        }
    }
    return found;
}

/// The elements that slip, as every tile takes them, and where they lie.
struct PreparedElements {
    PreparedElements(const std::vector<FAULT_PARAM>& elements, const float* shares, const NodeTask& task,
                     std::size_t layers) {
        const std::size_t count = elements.size();
        for (std::size_t n = 0; n < count; ++n) {
            if (elements[n].slip == 0.0) {
                continue;
            }
            const ElementSource source = MakeElementSource(elements[n], kAlpha);
            const SourceReach reach = ReachOf(elements[n], source, task, count);
            places.push_back(PlaceOf(elements[n], source, reach, {}));
            numbers.push_back(n);
            tiles.push_back({source, LimitsOf(reach),
                             EdgeDepths(DepthOf(elements[n], task.depth, count), source.CentroidBelowEdge()),
                             SharesOf(n, count, shares, layers)});
            dependOnOrder = dependOnOrder || (reach.isSwitched && tiles.back().depths.DependOnOrder());
        }
    }

    std::vector<TileElement> tiles;
    std::vector<ElementPlace> places;
    std::vector<std::size_t> numbers;  ///< in the table
    bool dependOnOrder = false;
};

std::unique_ptr<FramePlan> PlanOf(const NodeTask& task, const Nodes& nodes, const std::vector<ElementPlace>& places,
                                  bool withTurns) {
    switch (task.frame) {
        case NodeFrame::Plane:
            break;
        case NodeFrame::Globe:
            return MakeGlobePlan(nodes, places, withTurns);
        case NodeFrame::Utm:
            return MakeUtmPlan(nodes, places);
    }
    return MakePlanePlan(nodes, places);
}

/// The numbering of elements in an error is that of the table.
std::unique_ptr<FramePlan> PlanOf(const NodeTask& task, const Nodes& nodes, const PreparedElements& elements,
                                  bool withTurns) {
    try {
        return PlanOf(task, nodes, elements.places, withTurns);
    } catch (const NoPlaceError& error) {
        throw NoPlaceError(elements.numbers[error.Element()]);
    }
}

/// Tiles that follow each other are one part of the work where their order counts: whoever takes a part has to look
/// back for what was evaluated before it.
class TileParts {
public:
    TileParts(const NodeTiles& tiles, bool dependOnOrder, std::size_t threads) noexcept
        : m_tiles(tiles.Count()),
          m_perPart(!dependOnOrder ? 1 : std::max<std::size_t>(1, m_tiles / (kPartsPerThread * threads))) {
        if (dependOnOrder && threads == 1) {
            m_perPart = std::max<std::size_t>(1, m_tiles);
        }
    }
    [[nodiscard]] std::size_t Count() const noexcept { return (m_tiles + m_perPart - 1) / m_perPart; }
    [[nodiscard]] std::size_t First(std::size_t part) const noexcept { return part * m_perPart; }
    [[nodiscard]] std::size_t End(std::size_t part) const noexcept { return std::min(m_tiles, First(part + 1)); }

private:
    static constexpr std::size_t kPartsPerThread = 4;
    std::size_t m_tiles, m_perPart;
};

/// What one thread does.
class TileWorker {
public:
    TileWorker(const TileTask& task, const NodeTiles& tiles, const TileParts& parts, bool dependOnOrder,
               WorkBoard& board)
        : m_task(task),
          m_tiles(tiles),
          m_parts(parts),
          m_dependOnOrder(dependOnOrder),
          m_board(board),
          m_deformation(task) {}

    void Run() {
        for (std::size_t part = 0; m_board.Take(part);) {
            const std::size_t first = m_parts.First(part), end = m_parts.End(part);
            if (m_dependOnOrder && !LookBack(first)) {
                return;
            }
            for (std::size_t tile = first; tile < end; ++tile) {
                if (!Evaluate(m_tiles[tile])) {
                    return;
                }
                if (m_board.Poll(1.0 / static_cast<double>(end - first))) {
                    return;
                }
            }
        }
    }

private:
    /// False when the work is to end.
    bool Evaluate(const NodeTile& tile) {
        m_deformation.Open(tile);
        for (std::size_t n = 0; n < m_task.elements.size(); ++n) {
            m_deformation.Add(n);
            if (m_board.Poll()) {
                return false;
            }
        }
        m_deformation.Close();
        return true;
    }

    /// Finds for every element what it evaluates last before a tile. False when the work is to end.
    bool LookBack(std::size_t tile) {
        m_deformation.Forget();
        std::vector<std::size_t> open(m_task.elements.size());
        for (std::size_t n = 0; n < open.size(); ++n) {
            open[n] = n;
        }
        while (tile-- > 0 && !open.empty()) {
            m_deformation.Open(m_tiles[tile]);
            open.erase(
                std::remove_if(open.begin(), open.end(), [this](std::size_t n) { return m_deformation.PassBy(n); }),
                open.end());
            if (m_board.Poll()) {
                return false;
            }
        }
        return true;
    }

    const TileTask& m_task;
    const NodeTiles& m_tiles;
    const TileParts& m_parts;
    bool m_dependOnOrder;
    WorkBoard& m_board;
    TileDeformation m_deformation;
};

}  // namespace

bool DeformNodes(const std::vector<FAULT_PARAM>& elements, const float* shares, const Nodes& nodes,
                 const NodeTask& task, const NodeFields& fields) {
    const PreparedElements prepared(elements, shares, task, fields.layers);
    const bool withSlopes = fields.of[kSlopeUplift] != nullptr;
    const bool withTurns = withSlopes || fields.of[kEast] != nullptr || fields.of[kNorth] != nullptr;
    const std::unique_ptr<FramePlan> plan = PlanOf(task, nodes, prepared, withTurns);
    std::optional<FloorSlopes> slopes;
    if (withSlopes) {
        slopes.emplace(nodes, task.frame, task.spacing, task.minDepth);
    }
    const TileTask tileTask = {nodes, prepared.tiles, *plan, slopes ? &*slopes : nullptr, fields};
    const NodeTiles tiles(nodes.columns, nodes.rows, IsByColumn(task));
    const auto allowed = static_cast<std::size_t>(ThreadCount(task.threads));
    const std::size_t threads = std::clamp<std::size_t>(tiles.Count(), 1, allowed);
    const TileParts parts(tiles, prepared.dependOnOrder, threads);
    WorkBoard board(parts.Count(), task.progress);
    RunTeam(static_cast<int>(threads), board,
            [&] { TileWorker(tileTask, tiles, parts, prepared.dependOnOrder, board).Run(); });
    return !board.IsCancelled();
}

}  // namespace tidora
