#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "AVFoundation/AVAssetWriterInput.h"
#include "AVFoundation/AVError.h"
#include "AVFoundation/AVMediaFormat.h"
#include "CoreMedia/CMTime.h"
#include "Foundation/NSError.h"
#include "Foundation/NSURL.h"
#include "ObjectiveC/NSObject.h"

namespace ios {

class MovieWriter;
struct MediaError;

enum AVAssetWriterStatus : long {
  AVAssetWriterStatusUnknown = 0,
  AVAssetWriterStatusWriting = 1,
  AVAssetWriterStatusCompleted = 2,
  AVAssetWriterStatusFailed = 3,
  AVAssetWriterStatusCancelled = 4,
};

/// Writes one movie: a QuickTime file (or MPEG-4, by file type) with at most one track of each media type.
///
/// Unknown → `startWriting` → writing → `finishWriting…` → completed. Any failure (disk, codec, times that the caller
/// gives) ends in failed, with `error` naming the operation and the code; nothing more is written and, without a
/// fragment interval, no part of the file remains. Encoded media wait in an unnamed file in the folder of `outputURL`;
/// the movie appears there when it is complete, so a file at `outputURL` always plays.
///
/// Usable from any thread. Sound is encoded on the thread that appends it. A picture is converted there and encoded on
/// a thread of the writer's own, so the result, or a failure, shows at the next append or at the end. The movie is
/// assembled on a queue of the writer's own.
class AVAssetWriter : public NSObject {
 public:
  /// Empty, with `error` set, when `outputURL` is not a file URL or its folder does not exist, or
  /// `outputFileType` is neither AVFileTypeQuickTimeMovie nor AVFileTypeMPEG4. Does not touch the disk.
  static std::shared_ptr<AVAssetWriter> initWithURL(const NSURL& outputURL, const AVFileType& outputFileType,
                                                    std::shared_ptr<NSError>& error);
  explicit AVAssetWriter(std::shared_ptr<MovieWriter> writer, NSURL outputURL, AVFileType outputFileType);
  /// Destroying a writer that is writing cancels it; one that is finishing still finishes.
  ~AVAssetWriter() override;

  const NSURL& outputURL() const { return outputURL_; }
  const AVFileType& outputFileType() const { return outputFileType_; }
  AVAssetWriterStatus status() const;
  /// Why the status is failed; empty otherwise.
  std::shared_ptr<NSError> error() const;

  /// False without an input, for one that belongs to a writer, a second one of its media type, settings that cannot be
  /// met, and once writing has started.
  bool canAddInput(const std::shared_ptr<AVAssetWriterInput>& input) const;
  /// An input that cannot be added before writing started makes `startWriting` fail with the reason; later ones, and
  /// empty references, are ignored.
  void addInput(const std::shared_ptr<AVAssetWriterInput>& input);
  const std::vector<std::shared_ptr<AVAssetWriterInput>>& inputs() const { return inputs_; }

  /// With a numeric time, what was encoded before a failure becomes the movie at `outputURL`, soon after it and before
  /// the handler of `finishWriting…`, if the disk still takes it. To be set before writing; the length of the interval
  /// does not matter.
  void setMovieFragmentInterval(const CMTime& interval);

  /// Creates the file and sets up the encoders. False, and status failed, when that fails, when a file
  /// exists at `outputURL` (AVErrorFileAlreadyExists), or when no input was added. False without effect
  /// when called again.
  bool startWriting();
  /// `startTime` becomes the movie's time zero. Sound from before it is cut off, to the frame; pictures from
  /// before it are left out. Once, while writing; a time that is not numeric fails the writer.
  void startSessionAtSourceTime(const CMTime& startTime);

  /// Marks every input as finished, completes the file on the writer's queue and calls `handler` there, once,
  /// whatever the outcome: check `status`. A writer that is not writing is left as it is. A movie without
  /// any picture or sound fails.
  void finishWritingWithCompletionHandler(std::function<void()> handler);
  /// Gives up: status cancelled, no file. No effect unless writing; waits while the file is being completed.
  void cancelWriting();

 private:
  std::optional<MediaError> refusal(const std::shared_ptr<AVAssetWriterInput>& input) const;

  const std::shared_ptr<MovieWriter> writer_;
  const NSURL outputURL_;
  const AVFileType outputFileType_;
  std::vector<std::shared_ptr<AVAssetWriterInput>> inputs_;
};

}  // namespace ios
