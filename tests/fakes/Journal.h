// What the fakes were asked for, and what a call is to do instead of its work.
//
// Every faked function writes one line, "GetNEIndexList(true)", into one journal for the whole
// process and then takes the step that a test has planned for it, if any. A planned step raises an
// exception, gives a failure code, or does something in the middle of the call and returns 0.
//
// Thread-safety: every function from any thread. Steps run without any lock held.

#ifndef TESTS_FAKES_JOURNAL_H
#define TESTS_FAKES_JOURNAL_H

#include <cstdint>
#include <functional>
#include <initializer_list>
#include <string>
#include <vector>

#include "orb/idl/globaldefs.h"

namespace fakes {

class Journal {
 public:
  static std::vector<std::string> lines();

  // The lines of some functions only, in the order of the calls.
  static std::vector<std::string> linesOf(std::initializer_list<std::string> functions);

  // How often a function was called.
  static int count(const std::string& function);

  // Forgets the lines; the numbering of planned steps goes on.
  static void clear();
};

// The result is the call's failure code; 0 lets the call do its work.
using Step = std::function<CORBA::ULong()>;

// Plans the step of the n-th call of a function, counted from 1 and from the last reset.
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

// Writes the line of a call and takes its step; the result is the step's, 0 when none is planned.
CORBA::ULong called(const std::string& function, const std::string& arguments,
                    const std::string& suffix = "");

// Takes the step without writing a line, for functions that are called all the time.
CORBA::ULong calledSilently(const std::string& function);

std::string quoted(const std::string& text);
std::string quoted(const char* text);
std::string printed(bool value);
std::string printed(const globaldefs::NVSList_T& pairs);  // "[EMS=a, ManagedElement=5]"

// Forgets lines, counts and plans.
void resetJournal();

}  // namespace fakes

#endif
