// Ends the processes that topo-conformance has started, at its end and at a stop signal.

#ifndef CONFORMANCE_DESCENDANTS_H
#define CONFORMANCE_DESCENDANTS_H

namespace conformance {

// Makes this process the parent of orphaned descendants, also of those in another process group or
// session. The destructor kills every descendant and waits for its end.
//
// Thread-safety: constructed and destroyed by one thread; kill on any thread. Ownership: all child
// processes. Errors: none; where /proc has no lists of children, only the host's process group is
// killed (HostProcess), and a process of another user goes on.
class Descendants {
 public:
  Descendants();
  ~Descendants() { kill(); }
  Descendants(const Descendants&) = delete;
  Descendants& operator=(const Descendants&) = delete;

  // Kills the children of this process. A process whose parent is killed becomes a child of this
  // process and is killed too. Returns when no child is left.
  static void kill();
};

}  // namespace conformance

#endif
