// Operations on pixels by OpenCV, in one thread.
#include "../imaging/PixelOperations.h"

#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include <string>

namespace {

cv::Mat image(KSBitmap& bitmap) {
    const unsigned format = bitmap.getPixelFormat();
    const int depth = format == 9 ? CV_32F : format == 8 ? CV_16F : format >= 4 ? CV_16U : CV_8U;
    return {static_cast<int>(bitmap.getHeight()), static_cast<int>(bitmap.getWidth()),
            CV_MAKETYPE(depth, static_cast<int>(bitmap.getChannels())), bitmap.getData()};
}

void add(const std::string& operation, void (*run)(cv::Mat& to, cv::Mat& from)) {
    addPixelPeer(operation, "OpenCV", [run](KSBitmap& to, KSBitmap& from) {
        cv::setNumThreads(1);
        return [run, to = image(to), from = image(from)]() mutable { run(to, from); };
    });
}

constexpr int alphaToFront[] = {3, 0, 0, 1, 1, 2, 2, 3};  // pairs of from and to

void scale(cv::Mat& to, cv::Mat& from) { cv::resize(from, to, to.size(), 0, 0, cv::INTER_NEAREST); }

template <int factor, int divisor>
void convert(cv::Mat& to, cv::Mat& from) {
    from.convertTo(to, to.type(), double{factor} / divisor);
}

#define PEER(operation, call) add(#operation, [](cv::Mat& to, [[maybe_unused]] cv::Mat& from) { call; })

[[maybe_unused]] const bool registered = [] {
    PEER(rotateFloat, cv::mixChannels(&from, 1, &to, 1, alphaToFront, 4));
    PEER(flipInPlace, cv::flip(to, to, 0));
    PEER(flipCopying, cv::flip(from, to, 0));
    PEER(constantAlpha8, cv::bitwise_or(to, cv::Scalar(0, 0, 0, 255), to));
    PEER(invertAlpha8, cv::bitwise_xor(to, cv::Scalar(0, 0, 0, 255), to));
    for (const char* size : {"scaleDown", "scaleUp", "scaleOddly"})
        for (const char* depth : {"8", "16", "Float"}) add(std::string(size) + depth, scale);
    add("from8To16", convert<257, 1>);
    add("from16To8", convert<1, 257>);
    add("from8ToFloat", convert<1, 255>);
    add("from16ToFloat", convert<1, 65535>);
    add("fromHalfToFloat", convert<1, 1>);
    add("fromHalfTo8", convert<255, 1>);
    add("fromHalfTo16", convert<65535, 1>);
    add("fromFloatTo8", convert<255, 1>);
    add("fromFloatTo16", convert<65535, 1>);
    return true;
}();

}  // namespace
