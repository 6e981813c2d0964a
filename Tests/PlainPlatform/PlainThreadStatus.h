// What the plain edition's thread-status monitor has counted, for tests.
#pragma once

struct SPlainThreadStatus
{
    static int OpenCount_Get(int threadId);   // scopes that are open now
    static int ClosedCount_Get(int threadId); // scopes that have been closed
};
