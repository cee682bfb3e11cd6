#include "AVFoundation/Private/MovieFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <ctime>
#include <utility>

#include "Device/Files.h"

namespace ios {
namespace {

constexpr int kBufferSize = 32 * 1024;
// Starts of tracks are written in these units: fine enough for the start of sound to be
// exact to a frame or so.
constexpr int kMovieTimescale = 90000;

const std::string kStart = "start the movie file";
const std::string kWrite = "write to the movie";
const std::string kComplete = "complete the movie file";

std::string iso8601(std::time_t seconds) {
  std::tm date{};
  ::gmtime_r(&seconds, &date);
  char text[32];
  const std::size_t length = std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &date);
  return std::string(text, length);
}

}  // namespace

MediaResult<std::unique_ptr<MovieFile>> MovieFile::create(const std::filesystem::path& path,
                                                          const std::string& container,
                                                          Clock::WallTime begun) {
  ffmpeg::keepQuiet();
  IOS_TRY(checkFree(path));
  if (const auto problem = diskRefusal("create", path)) return failed(*problem);
  // Left behind by a process that was killed while it completed a movie.
  sweepTemporaryFiles(path.parent_path());

  std::unique_ptr<MovieFile> file(new MovieFile(path, temporaryNameBeside(path)));
  file->file_ =
      FileDescriptor(::open(file->temporary_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644));
  if (!file->file_) return failed(FileError{errno, "create", path});

  AVFormatContext* format = nullptr;
  const int made = avformat_alloc_output_context2(&format, nullptr, container.c_str(), nullptr);
  file->format_.reset(format);
  IOS_TRY(checked(kStart, made));
  auto* buffer = static_cast<unsigned char*>(av_malloc(kBufferSize));
  file->io_.reset(avio_alloc_context(buffer, kBufferSize, 1, file.get(), nullptr, &writeBytes, &seek));
  if (!buffer || !file->io_) {
    if (!file->io_) av_free(buffer);
    return failed(kStart, AVERROR(ENOMEM));
  }
  format->pb = file->io_.get();
  // Files repeat to the byte: no version of the writer, and no date but the device's.
  format->flags |= AVFMT_FLAG_CUSTOM_IO | AVFMT_FLAG_BITEXACT;
  format->avoid_negative_ts = AVFMT_AVOID_NEG_TS_DISABLED;
  const auto date = std::chrono::floor<std::chrono::seconds>(begun).time_since_epoch();
  av_dict_set(&format->metadata, "creation_time", iso8601(date.count()).c_str(), 0);
  return file;
}

MovieFile::MovieFile(std::filesystem::path path, std::filesystem::path temporary)
    : path_(std::move(path)), temporary_(std::move(temporary)) {}

MovieFile::~MovieFile() {
  format_ = nullptr;
  io_ = nullptr;
  // After a success no file has this name: the movie has been renamed.
  ::unlink(temporary_.c_str());
}

int MovieFile::writeBytes(void* self, std::uint8_t* bytes, int count) {
  auto& file = *static_cast<MovieFile*>(self);
  if (const auto refused = diskRefusal("write", file.path_)) return AVERROR(refused->code);
  for (int written = 0; written < count;) {
    const ssize_t result = ::pwrite(file.file_.number(), bytes + written,
                                    static_cast<std::size_t>(count - written), file.position_);
    if (result < 0 && errno == EINTR) continue;
    if (result < 0) return AVERROR(errno);
    written += static_cast<int>(result);
    file.position_ += result;
    file.size_ = std::max(file.size_, file.position_);
  }
  return count;
}

std::int64_t MovieFile::seek(void* self, std::int64_t offset, int whence) {
  auto& file = *static_cast<MovieFile*>(self);
  switch (whence & ~AVSEEK_FORCE) {
    case AVSEEK_SIZE:
      return file.size_;
    case SEEK_SET:
      return file.position_ = offset;
    case SEEK_CUR:
      return file.position_ += offset;
    case SEEK_END:
      return file.position_ = file.size_ + offset;
    default:
      return AVERROR(EINVAL);
  }
}

MediaResult<> MovieFile::outcome(const std::string& operation, int result) const {
  if (io_->error < 0) return failed(FileError{AVUNERROR(io_->error), "write", path_});
  return checked(operation, result);
}

MediaResult<> MovieFile::addStream(const ffmpeg::Stream& description) {
  AVStream* stream = avformat_new_stream(format_.get(), nullptr);
  if (!stream || !description.parameters) return failed(kStart, AVERROR(ENOMEM));
  stream->time_base = description.timeBase;
  timeBases_.push_back(description.timeBase);
  return checked(kStart, avcodec_parameters_copy(stream->codecpar, description.parameters.get()));
}

MediaResult<> MovieFile::start() {
  IOS_TRY(codecFault(kStart));
  AVDictionary* options = nullptr;
  av_dict_set_int(&options, "movie_timescale", kMovieTimescale, 0);
  const int result = avformat_write_header(format_.get(), &options);
  av_dict_free(&options);
  return outcome(kStart, result);
}

MediaResult<> MovieFile::write(int stream, AVPacket& packet) {
  IOS_TRY(codecFault(kWrite));
  packet.stream_index = stream;
  av_packet_rescale_ts(&packet, timeBases_[static_cast<std::size_t>(stream)],
                       format_->streams[stream]->time_base);
  return outcome(kWrite, av_write_frame(format_.get(), &packet));
}

MediaResult<> MovieFile::checkFree(const std::filesystem::path& path) {
  std::error_code error;
  if (!std::filesystem::exists(std::filesystem::symlink_status(path, error))) return {};
  return failed(FileError{EEXIST, "create", path});
}

MediaResult<> MovieFile::complete() {
  IOS_TRY(codecFault(kComplete));
  const int result = av_write_trailer(format_.get());
  avio_flush(io_.get());
  IOS_TRY(outcome(kComplete, result));
  if (const int code = file_.close()) return failed(FileError{code, "write", path_});
  // A file that somebody else put here in the meantime stays.
  IOS_TRY(checkFree(path_));
  if (const auto problem = renameFile(temporary_, path_)) return failed(*problem);
  return {};
}

}  // namespace ios
