#pragma once

#include "Descriptor.h"

namespace tessella {

/// Turns SIGINT and SIGTERM into a descriptor that becomes readable. A second signal ends the process at once. At
/// most one may exist.
class StopSignals {
 public:
  StopSignals();

  int descriptor() const noexcept { return readEnd_.get(); }

 private:
  Descriptor readEnd_;
  Descriptor writeEnd_;
};

}  // namespace tessella
