#pragma once

namespace tellvane {

// The library's two switches, one of each per process. Any thread.

/// Debug mode (true, also before the start) or production mode.
bool debugMode();
void setDebugMode(bool on);
/// Whether recordings include the microphone; false before the start.
bool microphoneEnabled();
void setMicrophoneEnabled(bool on);

}  // namespace tellvane
