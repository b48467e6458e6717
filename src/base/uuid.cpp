#include "base/uuid.h"

#include <uuid/uuid.h>

namespace tevra {

std::string newUUID() {
    uuid_t id;
    uuid_generate_random(id);
    char text[37];
    uuid_unparse_upper(id, text);
    return text;
}

}  // namespace tevra
