#include "polish/signature.h"

#include <gtest/gtest.h>

#include <string>

namespace tevra {
namespace {

Signature::Identity identity(std::string style, std::string signature = "") {
    Signature::Identity s;
    s.userFirstName = " Anna ";
    s.userLastName = "Kowalska\n";
    s.userCompany = "Acme Sp. z o.o.";
    s.userPhone = "+48 600 100 200";
    s.userEmail = "anna@acme.pl";
    s.signatureStyle = std::move(style);
    s.userSignature = std::move(signature);
    return s;
}

const std::string kFull = "Anna Kowalska\nAcme Sp. z o.o.\n+48 600 100 200 \u00B7 anna@acme.pl";

TEST(Signature, EachStyleBuildsItsBlockFromTrimmedFields) {
    const std::pair<Signature::Identity, std::string> cases[] = {
        {identity("name"), "Anna Kowalska"},
        {identity("name_phone"), "Anna Kowalska\n+48 600 100 200"},
        {identity("full"), kFull},
        {identity("legal"),
         kFull + "\n\nThis message and any attachments are confidential and intended solely for "
                 "the named recipient. If you are not the intended recipient, please notify the "
                 "sender and delete this message. Personal data is processed in accordance with "
                 "the GDPR (RODO)."},
        {identity("legal", " Poufne. "), kFull + "\n\nPoufne."},
        {identity("custom", "\n  Pozdrawiam,\nAnia  \n"), "Pozdrawiam,\nAnia"},
        {identity("custom", " "), ""},  // custom text is never replaced by the name
        {identity(""), "Anna Kowalska"},
        {identity("Full"), "Anna Kowalska"},
        {Signature::Identity{}, ""},
    };
    for (const auto& [settings, expected] : cases) {
        EXPECT_EQ(Signature::build(settings), expected) << settings.signatureStyle;
    }
    EXPECT_EQ(Signature::Identity{}.signatureStyle, "name");

    // The default footer only ever follows an identity block.
    Signature::Identity footerOnly;
    footerOnly.signatureStyle = "legal";
    footerOnly.userSignature = "Confidential.";
    EXPECT_EQ(Signature::build(footerOnly), "Confidential.");
    footerOnly.userSignature = "";
    EXPECT_EQ(Signature::build(footerOnly), "");
}

TEST(Signature, BlankFieldsLeaveNoSeparatorsBehind) {
    auto s = identity("full");
    s.userPhone = " \t ";
    EXPECT_EQ(Signature::build(s), "Anna Kowalska\nAcme Sp. z o.o.\nanna@acme.pl");
    s.userEmail = "";
    s.userCompany = "\n";
    EXPECT_EQ(Signature::build(s), "Anna Kowalska");
    s.userFirstName = "";
    EXPECT_EQ(Signature::build(s), "Kowalska");

    auto phoneOnly = identity("name_phone");
    phoneOnly.userFirstName = phoneOnly.userLastName = " ";
    EXPECT_EQ(Signature::build(phoneOnly), "+48 600 100 200");
    auto contactOnly = identity("full");
    contactOnly.userFirstName = contactOnly.userLastName = contactOnly.userCompany = "";
    EXPECT_EQ(Signature::build(contactOnly), "+48 600 100 200 \u00B7 anna@acme.pl");
}

TEST(Signature, PersonaNamesWhomTheGhostwriterWritesFor) {
    auto s = identity("name");
    EXPECT_EQ(Signature::persona(s), "Anna Kowalska of Acme Sp. z o.o.");
    s.userCompany = " ";
    EXPECT_EQ(Signature::persona(s), "Anna Kowalska");
    EXPECT_EQ(Signature::fullName(s), "Anna Kowalska");

    Signature::Identity companyOnly;
    companyOnly.userCompany = "\tAcme\n";
    EXPECT_EQ(Signature::persona(companyOnly), "Acme");
    EXPECT_EQ(Signature::fullName(companyOnly), "");
    EXPECT_EQ(Signature::persona(Signature::Identity{}), "the user");
}

}  // namespace
}  // namespace tevra
