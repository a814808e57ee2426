// A client that fetches views for a given time.
//
//   bench_rate REFERENCE
//
// Reads a number of seconds from each line of standard input, fetches the topo subnetwork view in
// one batch during these seconds, and prints the number of views per second.

#include <iostream>

#include "bench/end_to_end/Client.h"

namespace {

using Clock = std::chrono::steady_clock;

double viewsPerSecond(const TopoManagementManager::TopoMgr_I_var& manager, double seconds) {
  const auto start = Clock::now();
  std::chrono::duration<double> elapsed{};
  int views = 0;
  for (; elapsed.count() < seconds; elapsed = Clock::now() - start) {
    bench::viewOf(manager);
    ++views;
  }
  return views / elapsed.count();
}

int serve(const std::string& reference) {
  const auto orb = orb::startClient(bench::generousOptions());
  const auto manager = bench::narrowed<TopoManagementManager::TopoMgr_I>(orb->get(), reference);
  for (double seconds = 0; std::cin >> seconds;) {
    std::cout << viewsPerSecond(manager, seconds) << std::endl;
  }
  return 0;
}

}  // namespace

int main(int argc, char* argv[]) {
  if (argc != 2) {
    std::cerr << "usage: bench_rate REFERENCE\n";
    return 2;
  }
  try {
    return serve(argv[1]);
  } catch (const CORBA::SystemException& failure) {
    std::cerr << "bench_rate: " << orb::describe(failure) << '\n';
  } catch (const std::exception& failure) {
    std::cerr << "bench_rate: " << failure.what() << '\n';
  }
  return 2;
}
