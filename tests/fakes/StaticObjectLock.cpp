#include "tests/fakes/StaticObjectLock.h"

#include <pthread.h>

#include "ace/Recursive_Thread_Mutex.h"
#include "ace/Static_Object_Lock.h"
#include "tests/fakes/WaitedFor.h"

namespace fakes {
namespace {

pthread_mutex_t& mutex() {
  return ACE_Static_Object_Lock::instance()->lock();
}

void setMutexType(int type) {
  pthread_mutex_destroy(&mutex());
  pthread_mutexattr_t attributes;
  pthread_mutexattr_init(&attributes);
  pthread_mutexattr_settype(&attributes, type);
  pthread_mutex_init(&mutex(), &attributes);
  pthread_mutexattr_destroy(&attributes);
}

}  // namespace

FailingStaticObjectLock::FailingStaticObjectLock() {
  setMutexType(PTHREAD_MUTEX_ERRORCHECK);
  pthread_mutex_lock(&mutex());
}

FailingStaticObjectLock::~FailingStaticObjectLock() {
  pthread_mutex_unlock(&mutex());
  setMutexType(PTHREAD_MUTEX_RECURSIVE);
}

bool staticObjectLockIsWaitedFor() {
  return isWaitedFor(mutex());
}

}  // namespace fakes
