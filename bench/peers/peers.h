/* Peers in a shared object, so that calling them costs as much as calling the library. */
#ifndef BENCH_PEERS_H
#define BENCH_PEERS_H

#include "korv/datatypes.h"

#ifdef __cplusplus
extern "C" {
#endif

/* std::chrono's calendar. */
void peerDayToDate(const int32_t* day, OdbcDate* date);
void peerDateToDay(const OdbcDate* date, int32_t* day);

/* A loop of byte swaps over `count` units. */
void peerSwapUnits(uint32_t* units, uint32_t count);

/* A table of 256 bytes. */
void peerFlipBits(uint8_t* target, const uint8_t* source, uint32_t count);

#ifdef __cplusplus
}
#endif

#endif
