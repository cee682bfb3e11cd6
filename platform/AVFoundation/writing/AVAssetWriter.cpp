#include "AVFoundation/AVAssetWriter.h"

#include <filesystem>
#include <utility>

#include "AVFoundation/Private/MovieInputs.h"
#include "AVFoundation/Private/MovieWriter.h"

namespace ios {
namespace {

std::string containerOf(const AVFileType& type) {
  if (type == AVFileTypeQuickTimeMovie) return "mov";
  return type == AVFileTypeMPEG4 ? "mp4" : "";
}

}  // namespace

std::shared_ptr<AVAssetWriter> AVAssetWriter::initWithURL(const NSURL& outputURL,
                                                          const AVFileType& outputFileType,
                                                          std::shared_ptr<NSError>& error) {
  const auto refuse = [&](const std::string& reason) {
    error = MediaError{"make a movie writer", 0, reason}.asError();
    return nullptr;
  };
  if (!outputURL.isFileURL()) return refuse("the URL is not one of a file");
  std::error_code problem;
  const std::filesystem::path path = outputURL.filePath();
  if (!path.has_filename()) return refuse("the URL does not name a file");
  if (!std::filesystem::is_directory(path.parent_path(), problem)) return refuse("its folder does not exist");
  const std::string container = containerOf(outputFileType);
  if (container.empty()) return refuse("the file type " + outputFileType + " is not supported");
  error = nullptr;
  return std::make_shared<AVAssetWriter>(std::make_shared<MovieWriter>(path, container), outputURL,
                                         outputFileType);
}

AVAssetWriter::AVAssetWriter(std::shared_ptr<MovieWriter> writer, NSURL outputURL, AVFileType outputFileType)
    : writer_(std::move(writer)),
      outputURL_(std::move(outputURL)),
      outputFileType_(std::move(outputFileType)) {}

AVAssetWriter::~AVAssetWriter() {
  writer_->abandon();
}

AVAssetWriterStatus AVAssetWriter::status() const {
  return writer_->status();
}
std::shared_ptr<NSError> AVAssetWriter::error() const {
  return writer_->error();
}

std::optional<MediaError> AVAssetWriter::refusal(const std::shared_ptr<AVAssetWriterInput>& input) const {
  const auto refuse = [](const std::string& reason) { return MediaError{"add the input", 0, reason}; };
  if (!input) return refuse("there is no input");
  if (input->track()) return refuse("it belongs to a writer");
  for (const auto& other : inputs_) {
    if (other->mediaType() == input->mediaType()) return refuse("the movie has one of its media type");
  }
  if (!makeTrack(*input, writer_->container())) return refuse("its output settings cannot be met");
  return std::nullopt;
}

bool AVAssetWriter::canAddInput(const std::shared_ptr<AVAssetWriterInput>& input) const {
  return status() == AVAssetWriterStatusUnknown && !refusal(input);
}

void AVAssetWriter::addInput(const std::shared_ptr<AVAssetWriterInput>& input) {
  if (!input || status() != AVAssetWriterStatusUnknown) return;
  if (const auto reason = refusal(input)) {
    writer_->refuseStart(*reason);
    return;
  }
  const auto track = makeTrack(*input, writer_->container());
  if (!writer_->addTrack(track)) return;
  input->attach(track);
  inputs_.push_back(input);
}

void AVAssetWriter::setMovieFragmentInterval(const CMTime& interval) {
  writer_->keepWhatThereIs(CMTIME_IS_NUMERIC(interval));
}

bool AVAssetWriter::startWriting() {
  return writer_->start();
}
void AVAssetWriter::startSessionAtSourceTime(const CMTime& startTime) {
  writer_->startSession(startTime);
}

void AVAssetWriter::finishWritingWithCompletionHandler(std::function<void()> handler) {
  writer_->finish(std::move(handler));
}

void AVAssetWriter::cancelWriting() {
  writer_->cancel();
}

}  // namespace ios
