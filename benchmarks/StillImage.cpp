// A still image of the screen, against one encoding of the same pixels by libjpeg-turbo itself.
#include <benchmark/benchmark.h>
#include <turbojpeg.h>

#include "BenchmarkPhone.h"
#include "CoreGraphics/CGImage.h"
#include "UIKit/UIApplication.h"
#include "UIKit/UIGraphics.h"
#include "UIKit/UIImage.h"
#include "media/CaptureScreenshot.h"

namespace {

using namespace ios;

std::shared_ptr<UIImage> draw() {
  const auto window = UIApplication::sharedApplication()->keyWindow();
  UIGraphicsBeginImageContextWithOptions(window->bounds().size, false, 0);
  window->drawViewHierarchyInRectAfterScreenUpdates(window->bounds(), true);
  auto image = UIGraphicsGetImageFromCurrentImageContext();
  UIGraphicsEndImageContext();
  return image;
}

void saveCurrentScreenshot(benchmark::State& state) {
  BenchmarkPhone::shared();
  for (auto _ : state) tellvane::CaptureScreenshot::shared()->saveCurrentScreenshot();
}
BENCHMARK(saveCurrentScreenshot)->Name("still/save")->Unit(benchmark::kMicrosecond);

void drawAlone(benchmark::State& state) {
  BenchmarkPhone::shared();
  for (auto _ : state) benchmark::DoNotOptimize(draw());
}
BENCHMARK(drawAlone)->Name("still/draw")->Unit(benchmark::kMicrosecond);

void encodeAlone(benchmark::State& state) {
  BenchmarkPhone::shared();
  const auto image = draw()->CGImageValue();
  const tjhandle encoder = tjInitCompress();
  const auto width = static_cast<int>(image->width()), height = static_cast<int>(image->height());
  const auto bytesPerRow = static_cast<int>(image->bytesPerRow());
  unsigned long size = tjBufSize(width, height, TJSAMP_444);
  unsigned char* output = tjAlloc(static_cast<int>(size));
  for (auto _ : state) {
    // As the platform encodes at quality 1.0, which is what the library asks for first.
    if (tjCompress2(encoder, image->pixels(), width, bytesPerRow, height, TJPF_BGRX, &output, &size,
                    TJSAMP_444, 100, TJFLAG_NOREALLOC) != 0) {
      state.SkipWithError(tjGetErrorStr2(encoder));
      break;
    }
  }
  state.counters["bytes"] = static_cast<double>(size);
  tjFree(output);
  tjDestroy(encoder);
}
BENCHMARK(encodeAlone)->Name("still/encode")->Unit(benchmark::kMicrosecond);

}  // namespace
