#include "ratio_table.h"

#include <QApplication>

#include <opencv2/core/utility.hpp>

/// Prints the table of speed claims. Arguments are Google Benchmark's own.
int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    int noArguments = 1;
    const QApplication application(noArguments, argv);
    cv::setNumThreads(1);
    return RatioTable::run(argc, argv);
}
