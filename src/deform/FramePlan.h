#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <vector>

#include "deform/GridPlane.h"
#include "deform/Nodes.h"

namespace tidora {

/// How points become metres east and north of an element's reference point.
enum class NodeFrame {
    Plane,  ///< metres, as they are
    Globe,  ///< degrees, azimuthal equidistant about each reference point (globe/GlobeFrame.h)
    Utm,    ///< degrees, in the UTM zone of the element, as a run has it
};

/// The nodes of a tile as one element sees them; valid until the next call.
struct PlacedTile {
    bool isOutOfReach = false;                               ///< no node can be near: the rest means nothing
    const double *x = nullptr, *y = nullptr;                 ///< m
    PlanePoint origin;                                       ///< the reference point, in the same plane
    const std::uint8_t* isNear = nullptr;                    ///< as of ColumnPlaces
    const float *turnCosine = nullptr, *turnSine = nullptr;  ///< as of GlobeKernels; null: east is east everywhere
};

/// Turns the nodes of one tile after the other to elements. One for each thread.
class TilePlaces {
public:
    virtual ~TilePlaces() = default;
    TilePlaces() = default;
    TilePlaces(const TilePlaces&) = delete;
    TilePlaces& operator=(const TilePlaces&) = delete;

    virtual void Load(const NodeTile& tile) = 0;
    [[nodiscard]] virtual PlacedTile TurnTo(std::size_t element) = 0;
};

/// What a frame knows of all elements before any tile: made once, shared by all threads, never changed.
class FramePlan {
public:
    virtual ~FramePlan() = default;
    FramePlan() = default;
    FramePlan(const FramePlan&) = delete;
    FramePlan& operator=(const FramePlan&) = delete;

    /// Borrows the plan.
    [[nodiscard]] virtual std::unique_ptr<TilePlaces> MakePlaces() const = 0;
};

/// An element that has no place in its frame, by its number.
class NoPlaceError : public std::runtime_error {
public:
    explicit NoPlaceError(std::size_t element)
        : std::runtime_error("an element without a place in its zone"), m_element(element) {}
    [[nodiscard]] std::size_t Element() const noexcept { return m_element; }

private:
    std::size_t m_element;
};

/// The plans of the frames. elements: place and reach of each, of which the frame fills in the origin. Borrow the
/// nodes. withTurns: the turns of the globe are wanted. Throw NoPlaceError.
[[nodiscard]] std::unique_ptr<FramePlan> MakePlanePlan(const Nodes& nodes, const std::vector<ElementPlace>& elements);
[[nodiscard]] std::unique_ptr<FramePlan> MakeGlobePlan(const Nodes& nodes, const std::vector<ElementPlace>& elements,
                                                       bool withTurns);
[[nodiscard]] std::unique_ptr<FramePlan> MakeUtmPlan(const Nodes& nodes, const std::vector<ElementPlace>& elements);

}  // namespace tidora
