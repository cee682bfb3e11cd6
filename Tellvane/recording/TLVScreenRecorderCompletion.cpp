#include "Foundation/NSRunLoop.h"
#include "media/TLVPhotoAlbum.h"
#include "recording/TLVScreenRecorder.h"

namespace tellvane {

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
  completeRecordingSession(std::move(completion));
}

void TLVScreenRecorder::completeRecordingSession(std::function<void(std::optional<std::string>)> completion) {
  const auto self = sharedAs<TLVScreenRecorder>();
  // The name is free again when the last of these blocks is gone, called or not.
  const auto save = [self, movie = std::move(movie_), completion = std::move(completion)] {
    TLVPhotoAlbum::saveToPhotosAlbum(self->videoWriter_->outputURL(),
                                     [movie, completion](std::optional<std::string> localIdentifier) {
                                       if (completion) completion(std::move(localIdentifier));
                                       if (movie) removeTempFilePath(movie->path());
                                     });
  };
  // Queued after every render step, and from there after the append step that the last of
  // them queued.
  dispatch_async(render_queue_, [self, save] {
    dispatch_sync(self->append_pixelBuffer_queue_, [self, save] {
      self->videoWriterInput_->markAsFinished();
      self->videoWriter_->finishWritingWithCompletionHandler(
          [save] { dispatch_async(dispatch_get_main_queue(), save); });
    });
  });
}

}  // namespace tellvane
