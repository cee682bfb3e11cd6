#include "Foundation/NSRunLoop.h"
#include "ground/Memory.h"
#include "media/TLVPhotoAlbum.h"
#include "recording/TLVScreenRecorder.h"

namespace tellvane {

/// What is left of a recording from the stop request on: made before anything is on its way, so that the
/// completion is told whatever memory runs out later.
struct TLVScreenRecorder::Ending {
  std::shared_ptr<TemporaryMovie> movie;  // its name is free again with the last who may use it
  std::function<void(std::optional<std::string>)> completion;

  void tell(std::optional<std::string> localIdentifier) const {
    if (completion) completion(std::move(localIdentifier));
    if (movie) unlessMemoryRunsOut([this] { removeTempFilePath(movie->path()); });
  }

  /// On the main thread, if there is memory left to reach it.
  static void fail(const std::shared_ptr<Ending>& ending) {
    const bool reaches = !isMainThread() && unlessMemoryRunsOut([&] {
      dispatch_async(dispatch_get_main_queue(), [ending] { ending->tell(std::nullopt); });
    });
    if (!reaches) ending->tell(std::nullopt);
  }
};

void TLVScreenRecorder::stopTLVRecordingWithCompletion(
    std::function<void(std::optional<std::string> localIdentifier)> completion) {
  if (!isRecording_ || stopRequested_.exchange(true)) return;
  std::shared_ptr<AVCaptureSession> session;
  {
    MutexLock lock(sharedFields_);
    session = captureSession_;
  }
  if (session) session->stopRunning();
  isRecording_ = false;
  if (!displayLink_) return;  // somebody has set the flag of a recorder that was never started
  displayLink_->removeFromRunLoop(NSRunLoop::mainRunLoop(), NSRunLoopCommonModes);
  const auto movie = std::move(movie_);
  const bool completes = unlessMemoryRunsOut([&] {
    completeRecordingSession(std::make_shared<Ending>(Ending{movie, completion}));
  });
  if (!completes) Ending{movie, completion}.tell(std::nullopt);
}

void TLVScreenRecorder::completeRecordingSession(const std::shared_ptr<Ending>& ending) {
  // Queued after every render step, and from there after the append step that the last of
  // them queued.
  dispatch_async(render_queue_, [self = sharedAs<TLVScreenRecorder>(), ending] {
    bool finishes = false;
    unlessMemoryRunsOut([&] {
      dispatch_sync(self->append_pixelBuffer_queue_,
                    [&] { finishes = unlessMemoryRunsOut([&] { self->finishMovie(ending); }); });
    });
    if (!finishes) Ending::fail(ending);
  });
}

void TLVScreenRecorder::finishMovie(const std::shared_ptr<Ending>& ending) {
  videoWriterInput_->markAsFinished();
  videoWriter_->finishWritingWithCompletionHandler([self = sharedAs<TLVScreenRecorder>(), ending] {
    const bool saves = unlessMemoryRunsOut(
        [&] { dispatch_async(dispatch_get_main_queue(), [self, ending] { self->saveMovie(ending); }); });
    if (!saves) Ending::fail(ending);
  });
}

void TLVScreenRecorder::saveMovie(const std::shared_ptr<Ending>& ending) {
  const bool saves = unlessMemoryRunsOut([&] {
    TLVPhotoAlbum::saveToPhotosAlbum(
        videoWriter_->outputURL(),
        [ending](std::optional<std::string> localIdentifier) { ending->tell(std::move(localIdentifier)); });
  });
  if (!saves) ending->tell(std::nullopt);
}

}  // namespace tellvane
