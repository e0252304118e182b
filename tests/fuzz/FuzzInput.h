#pragma once

#include <cstddef>
#include <cstdint>
#include <iostream>
#include <stdexcept>
#include <streambuf>
#include <string>

#include <sys/mman.h>
#include <unistd.h>

/// The bytes of one fuzz input as a file that the readers can open by its path; it never touches a disk.
class FuzzFile {
public:
    FuzzFile(const std::uint8_t* data, std::size_t size) : m_descriptor(memfd_create("fuzz", 0)) {
        if (m_descriptor < 0 || write(m_descriptor, data, size) != static_cast<ssize_t>(size)) {
            throw std::runtime_error("no memory file for the fuzz input");
        }
    }
    ~FuzzFile() { close(m_descriptor); }
    FuzzFile(const FuzzFile&) = delete;
    FuzzFile& operator=(const FuzzFile&) = delete;

    [[nodiscard]] std::string Path() const { return "/proc/self/fd/" + std::to_string(m_descriptor); }

private:
    int m_descriptor;
};

/// Swallows what the readers print.
class Silence : public std::streambuf {
public:
    Silence() : m_out(std::cout.rdbuf(this)), m_err(std::cerr.rdbuf(this)) {}
    ~Silence() override {
        std::cout.rdbuf(m_out);
        std::cerr.rdbuf(m_err);
    }
    Silence(const Silence&) = delete;
    Silence& operator=(const Silence&) = delete;

private:
    int_type overflow(int_type character) override { return traits_type::not_eof(character); }

    std::streambuf* m_out;
    std::streambuf* m_err;
};

/// Ends the process when something that always holds does not: libFuzzer then keeps the input.
inline void Require(bool holds) {
    if (!holds) {
        __builtin_trap();
    }
}
