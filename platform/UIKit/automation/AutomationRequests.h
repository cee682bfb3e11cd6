#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

#include "CoreFoundation/PropertyList.h"
#include "UIKit/ViewTree.h"
#include "UIKit/VisibleElements.h"

/// What a driver may ask of an application that it steers, and what the application answers.
///
/// Each request is a struct with a name and an `Answer`. `fields` lists what is transmitted: it passes each
/// member to `field(key, member)`, for encoding and decoding alike, so that both ends agree
/// (AutomationCoding.h). Every member is transmitted, and must be present. A new request is a struct here,
/// its place in `Requests`, and its `AutomationServer::perform`.
// clang-format off
///
///     request            fields                                     the answer adds
///     runFor             nanoseconds
///     tap                x, y, count, fingers, hold, delay (ns)
///     swipe              fromX, fromY, toX, toY, duration (ns)
///     shake
///     settle             limit (ns)                                 still
///     elements                                                      elements: [{text, identifier, x, y, width,
///                                                                   height, control, role, enabled, focusable,
///                                                                   selected, on, parent, shown}]
///     screenshot                                                    png (empty: the display shows nothing)
///     state
///     reloadSettings
///     moveToBackground   front
///     moveToForeground
///     openURL            url                                        opened
///     limitFiles         bytes
///     shareDisplay       descriptor
///     step               touches: [{finger, phase, x, y}],          nextEvent, width, height, x, y,
///                        nanoseconds, shown                         changedWidth, changedHeight
///     tree                                                          top, windows: [{class, x, y, width, height,
///                                                                   label, role, enabled, hidden, children}]
///     terminate
///
// clang-format on
/// A request is a dictionary of its fields and "request", its name. Every answer has the fields of `Status`.
/// The clock moves within requests only.
namespace ios::automation {

using std::chrono::nanoseconds;

/// What every answer says, whatever was asked.
struct Status {
  std::string problem;     // why the request failed; empty: it succeeded
  nanoseconds uptime{};    // on the device's clock, when the request was done
  std::int64_t state = 0;  // a UIApplicationState
  std::string front;       // what is in front of the user: see UIApplication::front

  static void fields(auto& self, auto&& field) {
    field("problem", self.problem);
    field("uptime", self.uptime);
    field("state", self.state);
    field("front", self.front);
  }
};

/// The answer of requests that return nothing but the status.
struct Done {
  static void fields(auto&, auto&&) {}
};

struct RunFor {
  static constexpr const char* kName = "runFor";
  using Answer = Done;
  nanoseconds duration{};
  static void fields(auto& self, auto&& field) { field("nanoseconds", self.duration); }
};

struct Tap {
  static constexpr const char* kName = "tap";
  using Answer = Done;
  CGPoint location{};
  int count = 1;
  int fingers = 1;  // side by side
  nanoseconds hold = std::chrono::milliseconds(50);
  nanoseconds delay = std::chrono::milliseconds(100);  // from the end of one tap to the next
  static void fields(auto& self, auto&& field) {
    field("x", self.location.x);
    field("y", self.location.y);
    field("count", self.count);
    field("fingers", self.fingers);
    field("hold", self.hold);
    field("delay", self.delay);
  }
};

struct Swipe {
  static constexpr const char* kName = "swipe";
  using Answer = Done;
  CGPoint from, to;
  nanoseconds duration{};
  static void fields(auto& self, auto&& field) {
    field("fromX", self.from.x);
    field("fromY", self.from.y);
    field("toX", self.to.x);
    field("toY", self.to.y);
    field("duration", self.duration);
  }
};

struct Shake : Done {
  static constexpr const char* kName = "shake";
  using Answer = Done;
};

/// Lets time pass until the screen has come to rest, for `limit` at most.
struct Settle {
  static constexpr const char* kName = "settle";
  nanoseconds limit{};
  static void fields(auto& self, auto&& field) { field("limit", self.limit); }
  struct Answer {
    bool still = false;
    static void fields(auto& self, auto&& field) { field("still", self.still); }
  };
};

struct Elements : Done {
  static constexpr const char* kName = "elements";
  struct Answer {
    std::vector<VisibleElement> elements;
    static void fields(auto& self, auto&& field) { field("elements", self.elements); }
  };
};

/// The views as they are built, and the class of the view controller on top.
struct Tree : Done {
  static constexpr const char* kName = "tree";
  struct Answer {
    std::string top;
    std::vector<ViewNode> windows;
    static void fields(auto& self, auto&& field) {
      field("top", self.top);
      field("windows", self.windows);
    }
  };
};

struct Screenshot : Done {
  static constexpr const char* kName = "screenshot";
  struct Answer {
    Bytes png;
    static void fields(auto& self, auto&& field) { field("png", self.png); }
  };
};

/// Asks only for the status, at rest.
struct State : Done {
  static constexpr const char* kName = "state";
  using Answer = Done;
};

/// Says that another process has changed the device's settings.
struct ReloadSettings : Done {
  static constexpr const char* kName = "reloadSettings";
  using Answer = Done;
};

struct MoveToBackground {
  static constexpr const char* kName = "moveToBackground";
  using Answer = Done;
  std::string front;
  static void fields(auto& self, auto&& field) { field("front", self.front); }
};

struct MoveToForeground : Done {
  static constexpr const char* kName = "moveToForeground";
  using Answer = Done;
};

/// Brings the application to the front if it is not, and lets it open the URL.
struct OpenURL {
  static constexpr const char* kName = "openURL";
  std::string url;
  static void fields(auto& self, auto&& field) { field("url", self.url); }
  struct Answer {
    bool opened = false;
    static void fields(auto& self, auto&& field) { field("opened", self.opened); }
  };
};

/// Limits the size of files that the application writes to this many bytes, as a full disk would; a negative number
/// lifts the limit.
struct LimitFiles {
  static constexpr const char* kName = "limitFiles";
  using Answer = Done;
  std::int64_t bytes = -1;
  static void fields(auto& self, auto&& field) { field("bytes", self.bytes); }
};

/// Where to put the display's picture from now on: memory that the driver made (DisplayMemory), as an open descriptor
/// of the application's.
struct ShareDisplay {
  static constexpr const char* kName = "shareDisplay";
  using Answer = Done;
  std::int64_t descriptor = -1;
  static void fields(auto& self, auto&& field) { field("descriptor", self.descriptor); }
};

/// Lets a person use the phone: what fingers did since the last step happens now, one change of a finger after
/// another, and then this much time passes. The picture is put into the shared memory if this application is what
/// is shown.
struct Step {
  static constexpr const char* kName = "step";
  struct Touch {
    std::int64_t finger = 0;
    int phase = 0;  // a TouchSample::Phase
    CGPoint location;
    static void fields(auto& self, auto&& field) {
      field("finger", self.finger);
      field("phase", self.phase);
      field("x", self.location.x);
      field("y", self.location.y);
    }
  };
  std::vector<Touch> touches = {};
  nanoseconds duration{};
  bool shown = true;
  static void fields(auto& self, auto&& field) {
    field("touches", self.touches);
    field("nanoseconds", self.duration);
    field("shown", self.shown);
  }
  struct Answer {
    nanoseconds nextEvent{-1};  // when there is something to do next, on the device's clock; negative: never
    int width = 0, height = 0;  // of the picture, in pixels; 0: there is none
    int x = 0, y = 0, changedWidth = 0, changedHeight = 0;  // the part that changed since the last step
    static void fields(auto& self, auto&& field) {
      field("nextEvent", self.nextEvent);
      field("width", self.width);
      field("height", self.height);
      field("x", self.x);
      field("y", self.y);
      field("changedWidth", self.changedWidth);
      field("changedHeight", self.changedHeight);
    }
  };
};

/// The application ends in its own way, once it has answered.
struct Terminate : Done {
  static constexpr const char* kName = "terminate";
  using Answer = Done;
};

template <class... Each>
struct RequestList {};
using Requests =
    RequestList<RunFor, Tap, Swipe, Shake, Settle, Elements, Screenshot, State, ReloadSettings,
                MoveToBackground, MoveToForeground, OpenURL, LimitFiles, ShareDisplay, Step, Tree, Terminate>;

}  // namespace ios::automation
