/* Discrete Fourier transforms: of one to seven dimensions, any lengths, complex or real, one or many in a call.

       orv_dft* t;                                       1000 transforms of 256 complex numbers, in place:
       int64_t n = 256;
       orv_dft_create(&t, ORV_DFT_DOUBLE, ORV_DFT_COMPLEX, 1, &n);
       orv_dft_set(t, ORV_DFT_TRANSFORMS, 1000);
       orv_dft_commit(t);
       orv_dft_forward(t, x, x);                         as often as one likes, on any arrays
       orv_dft_free(t);

   Formula   Forward: y[k] = scale * sum over j of x[j] * exp(-2*pi*i*j*k/n), in every dimension. Backward: the same
             with +2*pi*i, from the spectrum y back to the signal x. Both scales are 1 unless set otherwise, so that
             forward and then backward multiplies by the product of the lengths.
   Sides     The signal is what forward reads and backward writes, the spectrum what forward writes and backward reads.
             Strides, distances and offsets belong to a side, not to a direction: one description serves both ways.
   Lengths   lengths[0] is the dimension whose elements are neighbours in memory unless strides say otherwise (for
             arrays stored by rows: the last index first). It is also the dimension that is halved in the spectrum of
             reals. A transform of no dimension, which is a copy, is one of a single dimension of length 1.
   Arrays    Element (j0, j1, ...) of transform b stands at
                 a[offset + b*distance + j0*strides[0] + j1*strides[1] + ...],
             counted in elements of its side: reals for a real signal or a packed spectrum, complex numbers (or, in
             split arrays, reals of either array) for all else. Arrays stand at any address. What lies between the
             elements is never touched, and out of place nothing of the input is written.
   Reals     have a spectrum with y[n-k] = conj(y[k]), of which only half is stored; ORV_DFT_FORMAT says how. Backward
             takes the parts that must be zero (the imaginary one of y[0], say) as zero.
   Results   Every function returns a status (orv/status.h): 0; -i if argument i is bad, counted from 1; or a positive
             code. Where it is not 0 nothing was changed or written, unless memory ran out in the middle of a
             transform; orv_last_error() has a sentence that names the setting at fault and its value.
   Threads   A committed transform is only read by orv_dft_forward, orv_dft_backward and the functions that ask, which
             any number of threads may call at once on arrays of their own. Creating different ones at once is fine,
             too. Setting, committing and freeing need the transform alone. Where threads only share work, their number
             does not change results. But some methods are chosen by it, as orv_dft_method tells: long signals of one
             dimension, and some lengths in single precision, may have other last bits on one thread than on several.
             What is committed while orv_get_reproducible() is not 0 uses one thread. */
#ifndef ORV_DFT_H
#define ORV_DFT_H

#include <orv/status.h>
#include <orv/types.h>

typedef struct orv_dft orv_dft; /* a transform: its settings, and how it is done once it is committed */

enum { ORV_DFT_MAX_RANK = 7 };

/* Precision and domain of a signal; both are for life. */
enum { ORV_DFT_SINGLE = 35, ORV_DFT_DOUBLE = 36 };
enum { ORV_DFT_COMPLEX = 32, ORV_DFT_REAL = 33 };

/* What can be set, and read back. The first value named is the default. */
enum {
    /* ORV_DFT_IN_PLACE: signal and spectrum are one array. Complex: with the same strides, distance and offset. Real:
       each real of the padded signal is half of a complex number of the spectrum, so in the dimensions above the first,
       between transforms and at the start, reals are twice as far apart as complex numbers, and both strides[0] are 1.
       ORV_DFT_OUT_OF_PLACE: two arrays that do not overlap. */
    ORV_DFT_PLACEMENT = 1,

    /* ORV_DFT_INTERLEAVED: a complex number is a real and an imaginary part, one behind the other. ORV_DFT_SPLIT: all
       real parts in one array and all imaginary parts in another; orv_dft_forward_split then takes the place of
       orv_dft_forward. Of real transforms it is the spectrum that is split, in ORV_DFT_HALF, out of place. */
    ORV_DFT_STORAGE,

    /* How the spectrum of n reals is stored, in dimension 0; n/2 is rounded down.
       ORV_DFT_HALF: n/2 + 1 complex numbers y[0] ... y[n/2].
       Packed, for one and two dimensions, as reals, where r and i are parts of y:
       ORV_DFT_CCS:  r0 0 r1 i1 r2 i2 ...           2*(n/2 + 1) of them: in one dimension the bytes of ORV_DFT_HALF
       ORV_DFT_PACK: r0 r1 i1 r2 i2 ...             n of them
       ORV_DFT_PERM: r0 r(n/2) r1 i1 r2 i2 ...      n of them; of an odd n as ORV_DFT_PACK */
    ORV_DFT_FORMAT,

    /* ORV_DFT_ORDERED: frequencies in their order. ORV_DFT_ANY_ORDER: forward may leave them in another one, which
       backward expects; for programs that multiply spectra and go back. */
    ORV_DFT_ORDERING,

    /* ORV_DFT_ALLOW: a call may take as much work memory as it likes. ORV_DFT_AVOID: methods that need less of it, if
       there are any; slower. */
    ORV_DFT_WORKSPACE,

    /* ORV_DFT_BOTH; ORV_DFT_FORWARD or ORV_DFT_BACKWARD alone, which can halve the time that orv_dft_commit takes. */
    ORV_DFT_DIRECTIONS,

    /* Number of transforms in a call, 1 by default, and how far apart they start on either side. Distances that are not
       set are those of transforms that stand right behind one another. 0 transforms are no work. */
    ORV_DFT_TRANSFORMS,
    ORV_DFT_SIGNAL_DISTANCE,
    ORV_DFT_SPECTRUM_DISTANCE,

    /* Where in the arrays the first element stands; 0. */
    ORV_DFT_SIGNAL_OFFSET,
    ORV_DFT_SPECTRUM_OFFSET,

    /* Threads that a call may use, at most 1024; 0: those of orv_get_num_threads() at the time of orv_dft_commit. */
    ORV_DFT_THREADS,

    /* To be read only. */
    ORV_DFT_PRECISION,
    ORV_DFT_DOMAIN,
    ORV_DFT_RANK,
    ORV_DFT_COMMITTED,   /* 1: it can run; 0: it was never committed, or changed since */
    ORV_DFT_THREADS_USED /* 0 if not committed */
};
enum { ORV_DFT_IN_PLACE = 43, ORV_DFT_OUT_OF_PLACE = 44 };
enum { ORV_DFT_INTERLEAVED = 39, ORV_DFT_SPLIT = 42 };
enum { ORV_DFT_CCS = 54, ORV_DFT_PACK = 55, ORV_DFT_PERM = 56, ORV_DFT_HALF = 57 };
enum { ORV_DFT_ORDERED = 48, ORV_DFT_ANY_ORDER = 49 };
enum { ORV_DFT_ALLOW = 51, ORV_DFT_AVOID = 52 };
enum { ORV_DFT_BOTH = 0, ORV_DFT_FORWARD = 1, ORV_DFT_BACKWARD = 2 };

/* A transform with default settings: one, in place, without gaps, unscaled. *dft is not touched on failure.
   Bad: 1 null; 2, 3 none of the codes; 4 below 1 or above ORV_DFT_MAX_RANK; 5 null, a length below 1, or more elements
   than there are addresses. */
ORV_API orv_status orv_dft_create(orv_dft** dft, int precision, int domain, int rank, const int64_t* lengths);

/* An uncommitted one of the same settings. Bad: 1, 2 null. */
ORV_API orv_status orv_dft_copy(orv_dft** copy, const orv_dft* dft);

/* Ends its life; null is allowed. */
ORV_API void orv_dft_free(orv_dft* dft);

/* Sets one of the settings above. Another value than before makes a committed transform an uncommitted one. Whether
   settings go together is looked at by orv_dft_commit, so their order does not matter.
   Bad: 1 null; 2 nothing that can be set; 3 no value of that setting. */
ORV_API orv_status orv_dft_set(orv_dft* dft, int setting, int64_t value);

/* The factors of both directions. Any numbers will do; 1 costs nothing, and 1/n next to nothing. Bad: 1 null. */
ORV_API orv_status orv_dft_set_scales(orv_dft* dft, double forward, double backward);

/* The strides of each side, a number for each dimension, none of them 0; one below 0 goes back from the element that
   pointer and offset name. Null: no gaps, lengths[0] innermost; in place and for spectra of reals with the padding that
   goes with it. Two elements of what is written must not share a place, which is not looked at. Bad: 1 null; 2, 3 a
   stride of 0 in a dimension longer than 1. */
ORV_API orv_status orv_dft_set_strides(orv_dft* dft, const int64_t* signal, const int64_t* spectrum);

/* What holds now, defaults included. Pointers to results may be null. Bad: 1 null; orv_dft_get: 2 no setting. */
ORV_API orv_status orv_dft_get(const orv_dft* dft, int setting, int64_t* value);
ORV_API orv_status orv_dft_get_scales(const orv_dft* dft, double* forward, double* backward);
ORV_API orv_status orv_dft_get_strides(const orv_dft* dft, int64_t* signal, int64_t* spectrum);
ORV_API orv_status orv_dft_get_lengths(const orv_dft* dft, int64_t* lengths);

/* Looks at all settings together, chooses a method and makes its tables; arrays are not needed. May be called again at
   any time. ORV_BAD_SETTING if settings contradict each other, ORV_UNSUPPORTED if they make sense but no kernel does
   that, ORV_NO_MEMORY; the transform is then not committed, with its settings as they are. Bad: 1 null. */
ORV_API orv_status orv_dft_commit(orv_dft* dft);

/* Computes. In place both arrays are the same, out of place they are not. ORV_NOT_COMMITTED before orv_dft_commit;
   ORV_BAD_SETTING if the storage is split or the direction was not committed; ORV_NO_MEMORY. Bad: 1 null; 2 null; 3
   null, another array than 2 in place, the same out of place. */
ORV_API orv_status orv_dft_forward(const orv_dft* dft, const void* signal, void* spectrum);
ORV_API orv_status orv_dft_backward(const orv_dft* dft, const void* spectrum, void* signal);

/* The same for split arrays. A real signal is signal_re alone, and signal_im is not looked at. In place the third array
   is the first and the fourth the second. */
ORV_API orv_status orv_dft_forward_split(const orv_dft* dft, const void* signal_re, const void* signal_im,
                                         void* spectrum_re, void* spectrum_im);
ORV_API orv_status orv_dft_backward_split(const orv_dft* dft, const void* spectrum_re, const void* spectrum_im,
                                          void* signal_re, void* signal_im);

/* A line that tells how the transform is done: the method, its threads, and the work memory that each call takes at
   least: that of the engine, to which blocks of rows and columns may come. Never null; valid until the calling thread's
   next call of it. */
ORV_API const char* orv_dft_method(const orv_dft* dft);

/* ---- In one call ------------------------------------------------------------------------------------------------ */

/* The transform of n numbers without gaps, and its inverse, which divides by n: ifft of fft is what one began with. out
   may be in. Whoever transforms one length again and again saves time with orv_dft_create.

   s and d transform n reals to the n/2 + 1 complex numbers of the half spectrum, and back to n reals; here out and in
   do not overlap. Bad: 1 below 1; 2, 3 null. */
ORV_API orv_status orv_fft_c(int64_t n, const orv_complex_float* in, orv_complex_float* out);
ORV_API orv_status orv_fft_z(int64_t n, const orv_complex_double* in, orv_complex_double* out);
ORV_API orv_status orv_fft_s(int64_t n, const float* in, orv_complex_float* out);
ORV_API orv_status orv_fft_d(int64_t n, const double* in, orv_complex_double* out);
ORV_API orv_status orv_ifft_c(int64_t n, const orv_complex_float* in, orv_complex_float* out);
ORV_API orv_status orv_ifft_z(int64_t n, const orv_complex_double* in, orv_complex_double* out);
ORV_API orv_status orv_ifft_s(int64_t n, const orv_complex_float* in, float* out);
ORV_API orv_status orv_ifft_d(int64_t n, const orv_complex_double* in, double* out);

/* The same in several dimensions, lengths[0] innermost and halved for reals; the inverse divides by the product of the
   lengths. Bad: 1 below 1 or above ORV_DFT_MAX_RANK; 2 null, a length below 1; 3, 4 null. */
ORV_API orv_status orv_fftn_c(int rank, const int64_t* lengths, const orv_complex_float* in, orv_complex_float* out);
ORV_API orv_status orv_fftn_z(int rank, const int64_t* lengths, const orv_complex_double* in, orv_complex_double* out);
ORV_API orv_status orv_fftn_s(int rank, const int64_t* lengths, const float* in, orv_complex_float* out);
ORV_API orv_status orv_fftn_d(int rank, const int64_t* lengths, const double* in, orv_complex_double* out);
ORV_API orv_status orv_ifftn_c(int rank, const int64_t* lengths, const orv_complex_float* in, orv_complex_float* out);
ORV_API orv_status orv_ifftn_z(int rank, const int64_t* lengths, const orv_complex_double* in, orv_complex_double* out);
ORV_API orv_status orv_ifftn_s(int rank, const int64_t* lengths, const orv_complex_float* in, float* out);
ORV_API orv_status orv_ifftn_d(int rank, const int64_t* lengths, const orv_complex_double* in, double* out);

#endif
