// How long the library waits. Every wait of its threads has one of these bounds, but for the one for a whole band.
#pragma once

// The bound of a wait that is tried again: a stop request is seen after at most about this time. In milliseconds.
constexpr unsigned kelWait_Retried = 100;

// Waits until it is over, however long that takes: what joins a thread passes it for the milliseconds.
constexpr unsigned kelWait_WithoutLimit = 4294967295U;
