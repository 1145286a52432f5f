// Feeds the kept inputs of a fuzz target to it, without a fuzzer: every argument is a file or a
// folder of files.

#include "fuzz_input.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cstdio>
#include <cstdlib>

namespace {

int replayFile(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    const QByteArray content = file.readAll();
    std::printf("%s\n", qPrintable(path));
    std::fflush(stdout);
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(content.constData()),
                           static_cast<std::size_t>(content.size()));
    return 1;
}

int replay(const QString& path) {
    if (!QFileInfo(path).isDir())
        return replayFile(path);
    int count = 0;
    const auto entries = QDir(path).entryInfoList(QDir::Files | QDir::Hidden, QDir::Name);
    for (const QFileInfo& entry : entries)
        count += replayFile(entry.filePath());
    return count;
}

} // namespace

int main(int argc, char** argv) {
    LLVMFuzzerTestOneInput(nullptr, 0);
    int count = 0;
    for (int i = 1; i < argc; ++i)
        count += replay(QFile::decodeName(argv[i]));
    std::printf("%d inputs\n", count);
    return count > 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
