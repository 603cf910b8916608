/* Where the time goes: which loaded library the calling thread is found in, a thousand times a second. */
#ifndef SHARE_H
#define SHARE_H

enum { most_shares = 6 };

struct share {
    char library[64]; /* name of its file */
    double part;      /* of the time: from 0 to 1 */
};

/* A measurement begins; then looks go on and off as often as it takes. They find libraries that were loaded before. */
void begin_shares(void);
void start_looking(void);
void stop_looking(void);

/* The libraries that it was found in most, the first one most of all. Returns how many; 0 if there were no looks. */
int shares(struct share found[most_shares]);

#endif
