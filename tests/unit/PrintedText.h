#pragma once

#include <sstream>
#include <streambuf>
#include <string>

/// Collects what goes to standard output and standard error between construction and destruction. The library prints
/// through std::cout and std::cerr only.
class PrintedText {
public:
    PrintedText();
    ~PrintedText();
    PrintedText(const PrintedText&) = delete;
    PrintedText& operator=(const PrintedText&) = delete;

    [[nodiscard]] std::string Out() const { return m_out.str(); }
    [[nodiscard]] std::string Err() const { return m_err.str(); }

private:
    std::ostringstream m_out;
    std::ostringstream m_err;
    std::streambuf* m_previousOut;
    std::streambuf* m_previousErr;
};
