#pragma once

#include <opencv2/objdetect.hpp>
#include <string>

/// Puts CascadeSearch in the place of the library's own search in a cascade that was loaded from
/// that file, after both were compared on a few rendered pictures, also with only the first stages
/// of the cascade, which let far more windows through; see searchBy().
///
/// Gives the reason where the library's search was kept: the cascade holds something that the
/// search does not know, or both found something different. Empty otherwise. Never throws.
std::string replaceCascadeSearch(cv::CascadeClassifier& cascade, const std::string& path);
