#pragma once

#include <string>
#include <string_view>

// The sign-off the pipeline puts below a voice's text, and the persona the
// ghostwriting prompt names, both built from the user's identity fields. The
// model never writes the sign-off itself: its prompts forbid it.
namespace tevra::Signature {

// The user's identity fields, as the settings keep them.
struct Identity {
    std::string userFirstName;
    std::string userLastName;
    std::string userEmail;
    std::string userPhone;
    std::string userCompany;
    std::string signatureStyle = "name";  // "name", "name_phone", "full", "legal" or "custom"
    std::string userSignature;            // the custom sign-off, or the footer of "legal"
};

// The footer of the "legal" style when the user has written none of their own.
extern const std::string_view defaultLegalFooter;

// First and last name, blanks dropped, joined by one space.
std::string fullName(const Identity& identity);

// The sign-off in the user's chosen style ("name", "name_phone", "full",
// "legal", "custom"; anything else reads as "name"). Empty when the fields
// the style needs are blank.
std::string build(const Identity& identity);

// Who the ghostwriter writes for: "Ann Smith of Acme", the name or the company
// alone, or "the user" when neither is known.
std::string persona(const Identity& identity);

}  // namespace tevra::Signature
