#pragma once

// The interfaces of the Wayland protocols that Tevra speaks beyond the core
// one and that Debian does not package: data control (the clipboard without
// the focus), the virtual keyboard and the foreign toplevels (which
// application is in front). Written from the protocols' published
// descriptions; only libwayland-client is needed to use them.
#include <wayland-client.h>

#include <cstdint>

namespace tevra::wayland {

extern const wl_interface dataControlManager;      // zwlr_data_control_manager_v1
extern const wl_interface dataControlDevice;       // zwlr_data_control_device_v1
extern const wl_interface dataControlSource;       // zwlr_data_control_source_v1
extern const wl_interface dataControlOffer;        // zwlr_data_control_offer_v1
extern const wl_interface virtualKeyboardManager;  // zwp_virtual_keyboard_manager_v1
extern const wl_interface virtualKeyboard;         // zwp_virtual_keyboard_v1
extern const wl_interface toplevelManager;         // zwlr_foreign_toplevel_manager_v1
extern const wl_interface toplevelHandle;          // zwlr_foreign_toplevel_handle_v1

// Request numbers, in the order the protocols declare them.
namespace request {
constexpr std::uint32_t managerCreateDataSource = 0;
constexpr std::uint32_t managerGetDataDevice = 1;
constexpr std::uint32_t deviceSetSelection = 0;
constexpr std::uint32_t deviceDestroy = 1;
constexpr std::uint32_t sourceOffer = 0;
constexpr std::uint32_t sourceDestroy = 1;
constexpr std::uint32_t offerReceive = 0;
constexpr std::uint32_t offerDestroy = 1;
constexpr std::uint32_t keyboardManagerCreate = 0;
constexpr std::uint32_t keyboardKeymap = 0;
constexpr std::uint32_t keyboardKey = 1;
constexpr std::uint32_t keyboardModifiers = 2;
constexpr std::uint32_t keyboardDestroy = 3;
constexpr std::uint32_t handleDestroy = 7;
}  // namespace request

// The event listeners, laid out as libwayland calls them.
struct DataControlDeviceListener {
    void (*dataOffer)(void* data, wl_proxy* device, wl_proxy* offer);
    void (*selection)(void* data, wl_proxy* device, wl_proxy* offer);
    void (*finished)(void* data, wl_proxy* device);
    void (*primarySelection)(void* data, wl_proxy* device, wl_proxy* offer);
};
struct DataControlSourceListener {
    void (*send)(void* data, wl_proxy* source, const char* mimeType, std::int32_t fd);
    void (*cancelled)(void* data, wl_proxy* source);
};
struct DataControlOfferListener {
    void (*offer)(void* data, wl_proxy* offer, const char* mimeType);
};
struct ToplevelManagerListener {
    void (*toplevel)(void* data, wl_proxy* manager, wl_proxy* handle);
    void (*finished)(void* data, wl_proxy* manager);
};
struct ToplevelHandleListener {
    void (*title)(void* data, wl_proxy* handle, const char* title);
    void (*appId)(void* data, wl_proxy* handle, const char* appId);
    void (*outputEnter)(void* data, wl_proxy* handle, wl_proxy* output);
    void (*outputLeave)(void* data, wl_proxy* handle, wl_proxy* output);
    void (*state)(void* data, wl_proxy* handle, wl_array* state);
    void (*done)(void* data, wl_proxy* handle);
    void (*closed)(void* data, wl_proxy* handle);
    void (*parent)(void* data, wl_proxy* handle, wl_proxy* parent);
};
// The toplevel's state value that marks the one with the focus.
constexpr std::uint32_t toplevelActivated = 2;

}  // namespace tevra::wayland
