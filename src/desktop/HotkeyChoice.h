#pragma once

#include "app/HotkeyBackend.h"
#include "base/Log.h"
#include "base/RunLoop.h"

#include <memory>

namespace korvex::desktop {

/// Who reports a shortcut in this session.
enum class HotkeyWay { xServer, portal, nobody };

/// By what the session says of itself, never by whether an X server answers: the one beside a
/// Wayland desktop does, and reports keys only while one of its own windows has the focus.
HotkeyWay hotkeyWay();

/// The portal's stands for "managed by the desktop" where there is no portal for it. Nothing is
/// connected to before it is used.
std::unique_ptr<app::HotkeyBackend> makeHotkeyBackend(HotkeyWay way, base::RunLoop& runLoop,
                                                      base::LogSink& log);

} // namespace korvex::desktop
