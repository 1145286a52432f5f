#include "ui/program_icon.h"

using namespace Qt::StringLiterals;

QIcon programIcon() {
    QIcon icon;
    for (const int size : {48, 128, 256})
        icon.addFile(u":/icons/lumeno-control-center-%1.png"_s.arg(size));
    return icon;
}
