#include "robustness/RunFiles.h"

#include <cstring>
#include <filesystem>
#include <stdexcept>

#include <sys/stat.h>

namespace fs = std::filesystem;

namespace {

template <typename Value>
void Append(std::string& bytes, Value value) {
    std::string raw(sizeof value, '\0');
    std::memcpy(raw.data(), &value, sizeof value);
    bytes += raw;
}

}  // namespace

Configuration::Configuration()
    : m_values{"t", "out", "0", "1", "1", "0", "fault.txt", "1", "0.5", "800", "1", "1", "bay", "0", "0", "topo.txt"} {}

Configuration& Configuration::Set(Slot slot, const std::string& value) {
    m_values.at(slot) = value;
    return *this;
}

std::string Configuration::Text() const {
    std::string text;
    for (const std::string& value : m_values) {
        text += "\n" + value + "\n";  // captions may be empty
    }
    return text;
}

std::string BinaryGrid(double orgX, double orgY, int nx, int ny, float dx) {
    std::string bytes;
    Append(bytes, orgX);
    Append(bytes, orgY);
    Append(bytes, nx);
    Append(bytes, ny);
    Append(bytes, dx);
    const bool isSize = nx > 0 && ny > 0 && nx < 10000 && ny < 10000;
    return bytes + std::string(isSize ? sizeof(float) * static_cast<std::size_t>(nx * ny) : 0, '\0');
}

std::string FaultLine(int lag) {
    return "1000 1500 500 300 10 40 90 1500 1000 2 0 " + std::to_string(lag) + " 5\n";
}

RunFolder::RunFolder() {
    SetMode("", 0755);
    Put(Configuration());
    Put("fault.txt", FaultLine());
    Put("topo.txt", kSmallGrid);
}

void RunFolder::Put(const std::string& name, std::string_view bytes) const {
    static_cast<void>(m_scratch.Write(name, bytes));
    SetMode(name, 0644);
}

void RunFolder::MakeFolder(const std::string& name) const {
    fs::create_directories(At(name));
    SetMode(name, 0777);
}

void RunFolder::Remove(const std::string& name) const {
    fs::remove_all(At(name));
}

void RunFolder::Link(const std::string& name, const std::string& target) const {
    Remove(name);
    fs::create_symlink(target, At(name));
}

void RunFolder::SetMode(const std::string& name, unsigned mode) const {
    if (chmod(At(name).c_str(), mode) != 0) {
        throw std::runtime_error("cannot change the mode of " + At(name));
    }
}
