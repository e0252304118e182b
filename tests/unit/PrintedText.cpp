#include "unit/PrintedText.h"

#include <iostream>

PrintedText::PrintedText()
    : m_previousOut(std::cout.rdbuf(m_out.rdbuf())), m_previousErr(std::cerr.rdbuf(m_err.rdbuf())) {}

PrintedText::~PrintedText() {
    std::cout.rdbuf(m_previousOut);
    std::cerr.rdbuf(m_previousErr);
}
