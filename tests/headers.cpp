// Nothing but the headers that are compiled with it, once for all test programs.
