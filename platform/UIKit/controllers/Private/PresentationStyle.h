#pragma once

namespace ios {

/// How a controller is presented. Those that do not cover the whole screen catch the taps outside them and,
/// except for popovers, dim what is behind them.
enum class PresentationStyle { fullScreen, alert, actionSheet, popover };

}  // namespace ios
