/**
 * @file noted_wait.h
 * In this test program nobody waits: a wait is taken down among the library calls, as "wait(<microseconds>)".
 */
#ifndef NOTED_WAIT_H
#define NOTED_WAIT_H

/** Lets a signal break off the next waits, each after half of its time. */
void interruptWaits(int waits);

#endif
