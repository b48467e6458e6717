#include "app/cli.h"

namespace tevra::CLI {

bool runIfRequested() {
    return false;
}

}  // namespace tevra::CLI
