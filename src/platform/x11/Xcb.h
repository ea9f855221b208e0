#pragma once

#include <xcb/xcb.h>
// One of its fields has the name of a C++ keyword.
#define explicit isExplicit
#include <xcb/xkb.h>
#undef explicit

#include <cstdlib>
#include <memory>

namespace korvex::platform::x11 {

struct Disconnect {
    void operator()(xcb_connection_t* connection) const { xcb_disconnect(connection); }
};
using Connection = std::unique_ptr<xcb_connection_t, Disconnect>;

struct Free {
    void operator()(void* answer) const { std::free(answer); }
};
/// A reply, an event or an error.
template <typename T>
using Answer = std::unique_ptr<T, Free>;

} // namespace korvex::platform::x11
