#include "support/shared_pictures.h"

#include <QFileInfo>

QString sharedPicture(const QString& relativePath) {
    const QFileInfo file(QStringLiteral(LUMENO_SHARED_PICTURES "/") + relativePath);
    return file.exists() ? file.canonicalFilePath() : QString();
}
