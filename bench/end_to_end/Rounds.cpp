#include "bench/end_to_end/Rounds.h"

#include <chrono>
#include <exception>
#include <iomanip>
#include <iostream>
#include <stdexcept>
#include <vector>

#include "orb/orb.h"

namespace bench {
namespace {

void run(const std::vector<std::string>& arguments, const MakeMeasurement& measurementOf) {
  if (arguments.size() < 3) {
    throw std::invalid_argument("usage: WARM_UPS ROUNDS CASE...");
  }
  std::vector<Measurement> measurements;
  measurements.reserve(arguments.size() - 2);
  for (std::size_t i = 2; i < arguments.size(); ++i) {
    measurements.push_back(measurementOf(arguments[i]));
  }
  for (int round = -std::stoi(arguments[0]); round < std::stoi(arguments[1]); ++round) {
    std::vector<double> numbers;
    for (const Measurement& measurement : measurements) {
      numbers.push_back(measurement());
    }
    if (round >= 0) {
      for (const double number : numbers) {
        std::cout << std::setprecision(9) << number << ' ';
      }
      std::cout << std::endl;
    }
  }
}

}  // namespace

double secondsOf(const std::function<void()>& run) {
  const auto start = std::chrono::steady_clock::now();
  run();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

int measureInTurns(int argc, char* argv[], const MakeMeasurement& measurementOf) {
  try {
    run({argv + 1, argv + argc}, measurementOf);
    return 0;
  } catch (const CORBA::SystemException& failure) {
    std::cerr << argv[0] << ": " << orb::describe(failure) << '\n';
  } catch (const CORBA::Exception& failure) {
    std::cerr << argv[0] << ": " << failure._name() << '\n';
  } catch (const std::exception& failure) {
    std::cerr << argv[0] << ": " << failure.what() << '\n';
  }
  return 2;
}

std::size_t countIn(const std::string& argument) {
  const std::size_t colon = argument.find(':');
  return colon == std::string::npos ? 0 : std::stoul(argument.substr(colon + 1));
}

std::string nameIn(const std::string& argument) {
  return argument.substr(0, argument.find(':'));
}

}  // namespace bench
