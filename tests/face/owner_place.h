#pragma once

#include "support/temporary_place.h"

#include <QSize>

/// A working folder whose only owner sample is the synthetic face of person 1, as the frontal
/// cascade cuts it out of frameWithFace(), so that the recogniser knows that very face.
class OwnerPlace : public TemporaryPlace {
public:
    OwnerPlace();
};
