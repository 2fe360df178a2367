/* SPDX-License-Identifier: MIT
 *
 * Stands in for a library that an attacker left in a folder: it ends the program that loads it.
 */
#include <unistd.h>

__attribute__((constructor)) static void endProgram(void) {
  _exit(99);
}
