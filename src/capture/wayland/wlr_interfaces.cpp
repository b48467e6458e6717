#include "capture/wayland/wlr_interfaces.h"

namespace tevra::wayland {
namespace {

// The interface of each message argument that is an object or a new object,
// null for the others; each message points at its first argument's slot.
const wl_interface* const kTypes[] = {
    nullptr,  // 0: no object arguments
    nullptr,
    nullptr,
    nullptr,
    &dataControlSource,     // 4: create_data_source
    &dataControlDevice,     // 5: get_data_device(id, seat)
    &wl_seat_interface,     // 6
    &dataControlOffer,      // 7: data_offer, selection, primary_selection
    &dataControlSource,     // 8: set_selection, set_primary_selection
    &wl_seat_interface,     // 9: create_virtual_keyboard(seat, id)
    &virtualKeyboard,       // 10
    &toplevelHandle,        // 11: toplevel, parent
    &wl_output_interface,   // 12: output_enter, output_leave
    &wl_surface_interface,  // 13: set_rectangle(surface, x, y, w, h)
    nullptr,
    nullptr,
    nullptr,
    nullptr,
};
const wl_interface** types(int index) {
    return const_cast<const wl_interface**>(&kTypes[index]);
}

const wl_message kManagerRequests[] = {
    {"create_data_source", "n", types(4)},
    {"get_data_device", "no", types(5)},
    {"destroy", "", types(0)},
};
const wl_message kDeviceRequests[] = {
    {"set_selection", "?o", types(8)},
    {"destroy", "", types(0)},
    {"set_primary_selection", "2?o", types(8)},
};
const wl_message kDeviceEvents[] = {
    {"data_offer", "n", types(7)},
    {"selection", "?o", types(7)},
    {"finished", "", types(0)},
    {"primary_selection", "2?o", types(7)},
};
const wl_message kSourceRequests[] = {
    {"offer", "s", types(0)},
    {"destroy", "", types(0)},
};
const wl_message kSourceEvents[] = {
    {"send", "sh", types(0)},
    {"cancelled", "", types(0)},
};
const wl_message kOfferRequests[] = {
    {"receive", "sh", types(0)},
    {"destroy", "", types(0)},
};
const wl_message kOfferEvents[] = {
    {"offer", "s", types(0)},
};
const wl_message kKeyboardManagerRequests[] = {
    {"create_virtual_keyboard", "on", types(9)},
};
const wl_message kKeyboardRequests[] = {
    {"keymap", "uhu", types(0)},
    {"key", "uuu", types(0)},
    {"modifiers", "uuuu", types(0)},
    {"destroy", "", types(0)},
};
const wl_message kToplevelManagerRequests[] = {
    {"stop", "", types(0)},
};
const wl_message kToplevelManagerEvents[] = {
    {"toplevel", "n", types(11)},
    {"finished", "", types(0)},
};
const wl_message kHandleRequests[] = {
    {"set_maximized", "", types(0)},       {"unset_maximized", "", types(0)},
    {"set_minimized", "", types(0)},       {"unset_minimized", "", types(0)},
    {"activate", "o", types(6)},           {"close", "", types(0)},
    {"set_rectangle", "oiiii", types(13)}, {"destroy", "", types(0)},
    {"set_fullscreen", "2?o", types(12)},  {"unset_fullscreen", "2", types(0)},
};
const wl_message kHandleEvents[] = {
    {"title", "s", types(0)},         {"app_id", "s", types(0)},
    {"output_enter", "o", types(12)}, {"output_leave", "o", types(12)},
    {"state", "a", types(0)},         {"done", "", types(0)},
    {"closed", "", types(0)},         {"parent", "3?o", types(11)},
};

template <std::size_t N>
constexpr int count(const wl_message (&)[N]) {
    return static_cast<int>(N);
}

}  // namespace

const wl_interface dataControlManager = {
    "zwlr_data_control_manager_v1", 2, count(kManagerRequests), kManagerRequests, 0, nullptr};
const wl_interface dataControlDevice = {"zwlr_data_control_device_v1", 2,
                                        count(kDeviceRequests),        kDeviceRequests,
                                        count(kDeviceEvents),          kDeviceEvents};
const wl_interface dataControlSource = {"zwlr_data_control_source_v1", 1,
                                        count(kSourceRequests),        kSourceRequests,
                                        count(kSourceEvents),          kSourceEvents};
const wl_interface dataControlOffer = {"zwlr_data_control_offer_v1", 1,
                                       count(kOfferRequests),        kOfferRequests,
                                       count(kOfferEvents),          kOfferEvents};
const wl_interface virtualKeyboardManager = {
    "zwp_virtual_keyboard_manager_v1", 1, count(kKeyboardManagerRequests),
    kKeyboardManagerRequests,          0, nullptr};
const wl_interface virtualKeyboard = {"zwp_virtual_keyboard_v1", 1, count(kKeyboardRequests),
                                      kKeyboardRequests,         0, nullptr};
const wl_interface toplevelManager = {"zwlr_foreign_toplevel_manager_v1", 3,
                                      count(kToplevelManagerRequests),    kToplevelManagerRequests,
                                      count(kToplevelManagerEvents),      kToplevelManagerEvents};
const wl_interface toplevelHandle = {"zwlr_foreign_toplevel_handle_v1",
                                     3,
                                     count(kHandleRequests),
                                     kHandleRequests,
                                     count(kHandleEvents),
                                     kHandleEvents};

}  // namespace tevra::wayland
