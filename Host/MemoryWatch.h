// Whether the process has ever been refused memory that a `new` wanted. What throws for it may end on a thread whose
// end nobody hears of, when there is no memory to tell of it either; who waits for such a thread looks here.
#pragma once

// From now on, a refusal is noted. The memory is not had for that: the `new` throws, or is null, as without it.
void Memory_Watch();

// Any thread. False for ever without Memory_Watch.
bool Memory_HasRunOut();
