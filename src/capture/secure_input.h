#pragma once

namespace tevra {

// Whether typed input is being kept from other programs right now, as it is in
// a password field. Asked at each use, never cached.
class SecureInput {
public:
    virtual ~SecureInput() = default;
    virtual bool isActive() = 0;
};

}  // namespace tevra
