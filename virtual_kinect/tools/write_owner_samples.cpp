// Fills a folder with sample images of the person whom the built-in room shows as the owner.

#include "room_samples.h"

#include <cstdio>
#include <exception>

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: write-owner-samples FOLDER\n");
        return 2;
    }
    try {
        std::printf("%d sample images written to %s\n", virtual_kinect::writeOwnerSamples(argv[1]),
                    argv[1]);
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "write-owner-samples: %s\n", error.what());
        return 1;
    }
}
