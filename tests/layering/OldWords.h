#pragma once

// What the words check must report: a newcomer. Read by the test of the check, compiled by nothing.
struct ActLog {
  bool putAside = false;
};

// What it must accept.
inline void removeFirst(std::list<int>& values) {
  values.pop_front();
}
