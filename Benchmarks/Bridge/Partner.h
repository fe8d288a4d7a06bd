#pragma once

#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "Support/ChildProgram.h"
#include "Support/TemporaryDirectory.h"
#include "Support/UnixListener.h"

namespace ormel::benchmarks {

/// A program under measurement (the bridge or the relay) between a client and a trivial host, both played here with
/// plain blocking calls: the host answers every frame with the same result.
class Partner {
 public:
  Partner(const std::string& executable, std::string_view request, std::string_view result);
  Partner(const Partner&) = delete;
  Partner& operator=(const Partner&) = delete;
  ~Partner();

  /// Sends the request and reads the whole line of the answer.
  void exchange();

 private:
  void serve();

  testing::TemporaryDirectory directory_;
  testing::UnixListener listener_;
  testing::ChildProgram program_;
  testing::Descriptor connection_;
  std::string request_;
  std::string result_;
  std::vector<char> answer_;
  std::thread host_;
};

/// The environment that the programs are started in.
testing::ChildOptions partnerOptions(const std::string& socketPath);

/// Blocking calls that fail with `std::runtime_error`.
void writeBlocking(int descriptor, std::string_view bytes);
void readBlocking(int descriptor, char* bytes, std::size_t count);

/// Reads a frame's length; false at the end of the connection.
bool readLength(int descriptor, std::size_t& length);

}  // namespace ormel::benchmarks
