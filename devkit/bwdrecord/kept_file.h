/**
 * The recording's file, kept open from one call to the next: opening takes longer than writing.
 * Others may close the descriptor, and open something else under its number; that is then left
 * alone.
 */
#pragma once

/** A descriptor of the file for one line. */
struct Loan {
    int fd = -1;        /**< -1: the file cannot be written */
    bool kept = false;  /**< it stays open; else it is this line's alone */
    bool empty = false; /**< nothing is in the file yet */
};

/** Lends the kept descriptor, or, while another thread has that, one more. A file that was removed
 * is made anew. */
Loan borrow_file(const char* path);

void give_back(const Loan& loan);

/** Closes the kept descriptor; for who records somewhere else from now on. */
void forget_file();
