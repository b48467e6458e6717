#include "polish/signature.h"

#include <initializer_list>

#include "base/text.h"

namespace tevra::Signature {

const std::string_view defaultLegalFooter =
    "This message and any attachments are confidential and intended solely for the named "
    "recipient. If you are not the intended recipient, please notify the sender and delete this "
    "message. Personal data is processed in accordance with the GDPR (RODO).";

namespace {

// The pieces that are not empty, joined by the separator.
std::string joinPresent(std::initializer_list<std::string_view> pieces,
                        std::string_view separator) {
    std::string joined;
    for (const std::string_view piece : pieces) {
        if (piece.empty()) {
            continue;
        }
        if (!joined.empty()) {
            joined += separator;
        }
        joined += piece;
    }
    return joined;
}

}  // namespace

std::string fullName(const Identity& identity) {
    return joinPresent({text::trim(identity.userFirstName), text::trim(identity.userLastName)},
                       " ");
}

std::string build(const Identity& identity) {
    const std::string name = fullName(identity);
    const std::string company = text::trim(identity.userCompany);
    const std::string phone = text::trim(identity.userPhone);
    const std::string email = text::trim(identity.userEmail);
    const std::string custom = text::trim(identity.userSignature);

    const std::string contact = joinPresent({phone, email}, " \u00B7 ");
    const std::string full = joinPresent({name, company, contact}, "\n");

    const std::string style = text::trim(identity.signatureStyle);
    if (style == "custom") {
        return custom;
    }
    if (style == "name_phone") {
        return joinPresent({name, phone}, "\n");
    }
    if (style == "full") {
        return full;
    }
    if (style == "legal") {
        // A footer alone, with no identity above it, is only the user's own.
        const std::string_view footer = !custom.empty() ? std::string_view(custom)
                                        : !full.empty() ? defaultLegalFooter
                                                        : std::string_view();
        return joinPresent({full, footer}, "\n\n");
    }
    return name;
}

std::string persona(const Identity& identity) {
    const std::string name = fullName(identity);
    const std::string company = text::trim(identity.userCompany);
    if (name.empty() && company.empty()) {
        return "the user";
    }
    return joinPresent({name, company}, " of ");
}

}  // namespace tevra::Signature
