/*
 * The publication of routes (core/routing/routing_context.h) with one writer and one reader, for spin.
 *
 * Both processes run for ever, so the model covers any number of publications and cycles. Every statement is
 * one access to the shared record; spin tries every order of them. A buffer has two entries here. A published
 * table is any list of no, one or two routes; each route is one of two, and one of them names channels that the
 * device does not have.
 *
 * Names with GHOST are not part of the program. They remember what the properties speak of.
 *
 * With -DFAULT_<NAME> the model has that fault, and spin must find an error. With -DWITNESS_<NAME> it claims
 * that something permitted never happens, and spin must find that it does. docs/model/check lists them all.
 */

#define ENTRIES 2   /* entries of a buffer, and the most routes of a table */
#define CHANNELS 2  /* of the device, in each direction */

/* Route 0 is 0 -> 1 with gain 0; route 1 is 2 -> 2 with gain 1, beyond the device's channels. An entry that was
 * never published must be harmless as well, and here it is equal to route 1. */
#define SRC(r) (2 * (r))
#define DST(r) (1 + (r))
#define GAIN(r) (r)
#define UNPUBLISHED 1

/* The shared record. */
typedef Buffer {
    byte src[ENTRIES];
    byte dst[ENTRIES];
    byte gain[ENTRIES];
    byte count
};
Buffer buffer[2];
bit activeBuf;

/* GHOST: the table that each buffer holds, or is meant to hold, as the writer knows it. */
typedef Table {
    byte route[ENTRIES];
    byte count
};
Table meant[2];

/* GHOST: whether a cycle is running, whether a publication is, and how many fell into the cycle: all that ended
 * after it began and began before it ended. More than two count as two. */
bool inCycle;
bool publishing;
byte fellIn;

#ifdef FAULT_TWO_WRITERS
#define WRITERS 2
#else
#define WRITERS 1
#endif

inline beginPublication() {
    d_step {
        if
        :: inCycle && fellIn < 2 -> fellIn++
        :: else
        fi;
        publishing = true
    }
}

/* Any table. The ghost changes only when the writer may write this buffer. */
inline chooseTable() {
    if
    :: count = 0
    :: count = 1
    :: count = 2
    fi;
    k = 0;
    do
    :: k < count ->
        if
        :: chosen[k] = 0
        :: chosen[k] = 1
        fi;
        k++
    :: else -> break
    od
}

inline writeEntries() {
    k = 0;
    do
    :: k < count ->
        buffer[target].src[k] = SRC(chosen[k]);
        buffer[target].dst[k] = DST(chosen[k]);
        d_step {
            buffer[target].gain[k] = GAIN(chosen[k]);
            k++
        }
    :: else -> break
    od;
    skip
}

inline noteMeaning() {
    k = 0;
    do
    :: k < count -> meant[target].route[k] = chosen[k]; k++
    :: else -> break
    od;
    do
    :: k < ENTRIES -> meant[target].route[k] = 0; k++
    :: else -> break
    od;
    meant[target].count = count
}

inline flip() {
    d_step {
        noteMeaning();
        activeBuf = activeBuf + (live == 0 -> 1 : -1);
        publishing = false
    }
}

proctype Writer() {
    bit live, target;
    byte count, k;
    byte chosen[ENTRIES];
    do
    :: beginPublication();
        live = activeBuf;
        atomic {
            chooseTable();
#ifdef FAULT_WRITES_LIVE_BUFFER
            target = live
#else
            target = 1 - live
#endif
        }
#ifdef FAULT_FLIPS_FIRST
        flip();
        writeEntries();
        buffer[target].count = count;
#else
        writeEntries();
#ifdef FAULT_COUNT_AFTER_FLIP
        flip();
        buffer[target].count = count;
#else
        buffer[target].count = count;
        flip();
#endif
#endif
        d_step {
            live = 0;
            target = 0;
            count = 0;
            k = 0;
            chosen[0] = 0;
            chosen[1] = 0
        }
    od
}

/* The callback uses a channel as an index into the tables of channels. */
inline use(channel) {
    assert(channel < CHANNELS)
}

inline useEntry() {
#if defined FAULT_UNCHECKED_INDEX
    use(src);
    use(dst)
#elif defined FAULT_READS_ENTRY_TWICE
    if
    :: src < CHANNELS && dst < CHANNELS ->
        use(buffer[live].src[i]);
        use(buffer[live].dst[i])
    :: else
    fi
#else
    if
    :: src < CHANNELS && dst < CHANNELS ->
        use(src);
        use(dst)
    :: else
    fi
#endif
}

proctype Reader() {
    bit live;
    byte count, i, src, dst;
    Table expected; /* GHOST */
    bool whole;     /* GHOST */
    bool sawNew;    /* GHOST */
    do
    :: d_step {
            inCycle = true;
            fellIn = (publishing -> 1 : 0);
        }
        d_step {
            live = activeBuf;
            expected.count = meant[live].count;
            expected.route[0] = meant[live].route[0];
            expected.route[1] = meant[live].route[1];
            whole = true
        }
#ifdef FAULT_READS_INDEX_TWICE
        count = buffer[activeBuf].count;
#else
        count = buffer[live].count;
#endif
        d_step {
            whole = whole && count == expected.count;
            assert(count <= ENTRIES);
            /* From the last to the first, as in the callback. */
            i = count
        }
        do
        :: i > 0 ->
            src = buffer[live].src[i - 1];
            dst = buffer[live].dst[i - 1];
            d_step {
                i--;
                if
                :: i < expected.count ->
                    whole = whole && src == SRC(expected.route[i]) && dst == DST(expected.route[i]) &&
                            buffer[live].gain[i] == GAIN(expected.route[i])
                :: else
                fi
            }
            useEntry();
            d_step {
                src = 0;
                dst = 0
            }
        :: else -> break
        od;
        skip;
        d_step {
            assert(whole || fellIn == 2);
#ifdef WITNESS_NEVER_MIXED
            assert(whole);
#endif
#ifdef WITNESS_TWO_ALWAYS_MIX
            assert(!whole || fellIn < 2);
#endif
#ifdef WITNESS_NOTHING_FALLS_IN
            assert(fellIn == 0);
#endif
#ifdef WITNESS_NOTHING_IS_READ
            assert(count == 0);
#endif
            inCycle = false;
            fellIn = 0;
            live = 0;
            count = 0;
            whole = false;
            expected.count = 0;
            expected.route[0] = 0;
            expected.route[1] = 0
        }
    od
}

init {
    d_step {
        byte b, e;
        for (b : 0 .. 1) {
            for (e : 0 .. ENTRIES - 1) {
                buffer[b].src[e] = SRC(UNPUBLISHED);
                buffer[b].dst[e] = DST(UNPUBLISHED);
                buffer[b].gain[e] = GAIN(UNPUBLISHED)
            }
        }
    }
    atomic {
        run Reader();
        run Writer();
#ifdef FAULT_TWO_WRITERS
        run Writer()
#endif
    }
}
