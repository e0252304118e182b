#include "EngineBench.h"

#include <chrono>
#include <functional>
#include <thread>
#include <vector>

#include "deform/NodeDeformation.h"
#include "okada/batch/SurfaceBatch.h"

namespace bench {
namespace {

constexpr std::size_t kSide = 1000;  ///< nodes along either axis

double WallSeconds(const std::function<void()>& work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

/// Elements off Japan, on degrees or in metres, over a grid of a minute of arc.
class EngineScene {
public:
    EngineScene(tidora::NodeFrame frame, std::size_t elements, int threads) : m_uz(kSide * kSide) {
        const double scale = frame == tidora::NodeFrame::Plane ? 1.0e5 : 1.0;
        for (std::size_t n = 0; n < elements; ++n) {
            tidora::FAULT_PARAM e;
            e.org_x = scale * (142.0 + 0.03 * static_cast<double>(n));
            e.org_y = scale * (36.5 + 0.06 * static_cast<double>(n));
            e.baseOffset = 12000.0;
            e.strike = 200.0;
            e.dip = 13.0;
            e.rake = 85.0;
            e.length = 50.0e3;
            e.width = 25.0e3;
            e.slip = 3.0;
            m_elements.push_back(e);
        }
        for (std::size_t i = 0; i < kSide; ++i) {
            m_x.push_back(scale * (135.0 + static_cast<double>(i) / 60.0));
            m_y.push_back(scale * (30.0 + static_cast<double>(i) / 60.0));
        }
        m_task.frame = frame;
        m_task.threads = threads;
    }

    void Run() {
        const tidora::Nodes nodes = {true, kSide, kSide, m_x.data(), m_y.data(), nullptr};
        static_cast<void>(
            tidora::DeformNodes(m_elements, nullptr, nodes, m_task, {1, {m_uz.data(), nullptr, nullptr, nullptr}}));
    }

private:
    std::vector<tidora::FAULT_PARAM> m_elements;
    std::vector<double> m_x, m_y;
    std::vector<float> m_uz;
    tidora::NodeTask m_task;
};

/// The kernel alone, at a thousand points of the first-level cache again and again.
class KernelScene {
public:
    explicit KernelScene(std::size_t pointsAndElements) : m_calls(pointsAndElements / kPoints) {
        m_source.dip = 13.0F;
        m_source.al2 = 5.0e4F;
        m_source.aw1 = -2.5e4F;
        m_source.strikeSlip = 0.3F;
        m_source.dipSlip = 3.0F;
        for (std::size_t i = 0; i < kPoints; ++i) {
            m_x[i] = static_cast<float>(i) * 700.0F - 3.0e5F;
            m_y[i] = static_cast<float>(i % 37) * 9000.0F - 1.5e5F;
            m_depth[i] = 12000.0F;
        }
    }

    void Run() {
        for (std::size_t call = 0; call < m_calls; ++call) {
            tidora::FiniteSurfaceBatch(m_source, {kPoints, m_x, m_y, m_depth}, {nullptr, nullptr, m_uz});
        }
    }

private:
    static constexpr std::size_t kPoints = 1000;
    std::size_t m_calls;
    tidora::RectangleSource m_source;
    float m_x[kPoints] = {}, m_y[kPoints] = {}, m_depth[kPoints] = {}, m_uz[kPoints] = {};
};

}  // namespace

Ratio GlobeOverPlane() {
    EngineScene globe(tidora::NodeFrame::Globe, 10, 1), plane(tidora::NodeFrame::Plane, 10, 1);
    return Compare([&] { globe.Run(); }, [&] { plane.Run(); });
}

Ratio GlobeOverKernel() {
    EngineScene globe(tidora::NodeFrame::Globe, 10, 1);
    KernelScene kernel(kSide * kSide * 10);
    return Compare([&] { globe.Run(); }, [&] { kernel.Run(); });
}

Ratio OneThreadOverTwo() {
    EngineScene one(tidora::NodeFrame::Globe, 50, 1), two(tidora::NodeFrame::Globe, 50, 2);
    return Compare([&]() -> double { return WallSeconds([&] { one.Run(); }); },
                   [&]() -> double { return WallSeconds([&] { two.Run(); }); });
}

Ratio TwoKernelsInTurnOverSideBySide() {
    KernelScene first(kSide * kSide * 25), second = first;
    const auto inTurn = [&] {
        first.Run();
        second.Run();
    };
    const auto sideBySide = [&] {
        std::thread other([&] { second.Run(); });
        first.Run();
        other.join();
    };
    return Compare([&]() -> double { return WallSeconds(inTurn); },
                   [&]() -> double { return WallSeconds(sideBySide); });
}

double KernelNanoseconds() {
    constexpr std::size_t kPoints = 10 * kSide * kSide;
    KernelScene kernel(kPoints);
    kernel.Run();
    return Seconds([&] { kernel.Run(); }) / static_cast<double>(kPoints) * 1.0e9;
}

}  // namespace bench
