#include "fault/RowFile.h"

#include <iostream>

#include "support/ErrorBlock.h"
#include "support/TextLines.h"

namespace tidora {

RowFileError ReadRows(const std::string& path, std::size_t bufferSize, std::size_t columns,
                      const std::function<void(const std::vector<std::string>&)>& take) {
    const FileHandle file = OpenForReading(path, "r");
    if (!file) {
        return RowFileError::CannotOpen;
    }
    BoundedLineReader lines(file.get(), bufferSize);
    while (lines.Next()) {
        if (lines.IsComment()) {
            continue;
        }
        const std::vector<std::string> tokens = Tokens(lines.Line(), kDataDelimiters);
        if (tokens.size() < columns) {
            return RowFileError::ShortLine;
        }
        take(tokens);
    }
    return RowFileError::None;
}

void ReportRowFileError(RowFileError error, const std::string& object, const std::string& file) {
    std::vector<std::string> details = {"Abnormal action at Reading File Method."};
    if (error == RowFileError::CannotOpen) {
        details.emplace_back("Can not open file.");
        details.emplace_back("Particular attention should be given to \"" + file + "\".");
    } else {
        details.emplace_back("You should check the Format of " + file + ".");
    }
    ReportError(std::cerr, object, details);
}

}  // namespace tidora
