// The journal of the calls of all fakes, and the steps that a test plans for calls.
//
// Each call of a fake:
//   1. writes a line, such as "GetNEIndexList(true)", in the journal of the process,
//   2. runs the step that a test has planned for the call, if any,
//   3. does its work, unless the step threw an exception or returned a failure code.
//
// Thread-safety: any thread. Steps run without a lock. Ownership: the process owns lines and steps.

#ifndef TESTS_FAKES_JOURNAL_H
#define TESTS_FAKES_JOURNAL_H

#include <cstdint>
#include <functional>
#include <initializer_list>
#include <string>
#include <vector>

#include "orb/idl/globaldefs.h"

namespace fakes {

// The journal of the process. Errors: std::bad_alloc.
class Journal {
 public:
  static std::vector<std::string> lines();

  // The lines of some functions, in the order of the calls.
  static std::vector<std::string> linesOf(std::initializer_list<std::string> functions);

  // The number of calls of a function.
  static int count(const std::string& function);

  // Removes the lines. Does not restart the numbering of calls (onCall).
  static void clear();
};

// Returns the failure code of the call; after 0 the call does its work.
using Step = std::function<CORBA::ULong()>;

// Plans the step of the n-th call of a function, counted from 1 after the last reset.
void onCall(const std::string& function, int nth, Step step);

// Plans the step of every call of a function.
void onEveryCall(const std::string& function, Step step);

// --- Steps.

Step raiseProcessException(std::int32_t code);
Step raiseInterfaceNotExist();
Step raiseRuntimeError(const std::string& text);
Step raiseBadAlloc();
Step raiseTransient();  // a CORBA system exception
Step giveCode(CORBA::ULong code);

// --- For the fakes themselves.

// Writes the line of a call and runs its step. Returns the result of the step; 0 without a step.
CORBA::ULong called(const std::string& function, const std::string& arguments,
                    const std::string& suffix = "");

// Runs the step of a call without a line, for functions that are called very often.
CORBA::ULong calledSilently(const std::string& function);

std::string quoted(const std::string& text);
std::string quoted(const char* text);
std::string printed(bool value);
std::string printed(const globaldefs::NVSList_T& pairs);  // "[EMS=a, ManagedElement=5]"

// Removes lines, counts and planned steps.
void resetJournal();

}  // namespace fakes

#endif
