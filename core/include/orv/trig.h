/* Sine and cosine transforms: one row of reals or many, of any length, in place or not.

       orv_trig* t;                                      a heat profile between two cold ends, 999 points
       orv_trig_create(&t, ORV_DFT_DOUBLE, ORV_TRIG_SINE, 999);
       orv_trig_forward(t, u, u);                        u becomes its coefficients,
       ...                                               which decay, each at its own rate,
       orv_trig_backward(t, u, u);                       and become a profile again
       orv_trig_free(t);

   Formula   Of m points x[0] ... x[m-1], forward makes m coefficients y[0] ... y[m-1], and backward makes x of y. With
             the scales a = 1/n and b = 1/2, which can be set, backward undoes forward.

             ORV_TRIG_SINE, n = m+1                      both ends are zero, and not stored           DST-I
                 y[k] = a * 2 * sum over j of x[j]*sin((j+1)*(k+1)*pi/n)
                 x[j] = b * 2 * sum over k of y[k]*sin((j+1)*(k+1)*pi/n)
             ORV_TRIG_COSINE, n = m-1                    no slope at the ends, m at least 2           DCT-I
                 y[k] = a * (x[0] + (-1)^k*x[n] + 2 * sum over 0 < j < n of x[j]*cos(j*k*pi/n))
                 x[j] = b * (y[0] + (-1)^j*y[n] + 2 * sum over 0 < k < n of y[k]*cos(j*k*pi/n))
             ORV_TRIG_STAGGERED_COSINE, n = m            no slope at x[0], zero behind x[n-1]         DCT-III, DCT-II
                 y[k] = a * (x[0] + 2 * sum over j > 0 of x[j]*cos(j*(2k+1)*pi/2n))
                 x[j] = b * 2 * sum over k of y[k]*cos(j*(2k+1)*pi/2n)
             ORV_TRIG_STAGGERED_SINE, n = m              zero before x[0], no slope at x[n-1]         DST-III, DST-II
                 y[k] = a * ((-1)^k*x[n-1] + 2 * sum over j < n-1 of x[j]*sin((j+1)*(2k+1)*pi/2n))
                 x[j] = b * 2 * sum over k of y[k]*sin((j+1)*(2k+1)*pi/2n)
             ORV_TRIG_STAGGERED2_COSINE, n = m           no slope half a step before x[0], zero       DCT-IV
                                                         half a step behind x[n-1]
                 y[k] = a * 2 * sum over j of x[j]*cos((2j+1)*(2k+1)*pi/4n), and back the same with b
             ORV_TRIG_STAGGERED2_SINE, n = m             the other way round                          DST-IV
                 y[k] = a * 2 * sum over j of x[j]*sin((2j+1)*(2k+1)*pi/4n), and back the same with b

             Many programs call the DCT-II "the" cosine transform: it is the backward one of ORV_TRIG_STAGGERED_COSINE.
   Time      Half of a complex Fourier transform of n points and two passes over the row. A transform is fast where n
             has small prime factors, which is not m for the first two kinds: of sines 1023 points, of cosines 1025.
   Rounding  Sums of neighbours and, forward in the staggered kinds, divisions by small sines make some results worse
             than those of a Fourier transform: in units of the last place of the largest one by about sqrt(n) in the
             mean, n/6 next to the ends. The kinds 4 and 5 have no such steps, and orv_trig_create_careful makes all
             others without: as exact as a Fourier transform, a little slower, with more work memory.
   Results   Every function returns a status (orv/status.h): 0; -i if argument i is bad, counted from 1; or a positive
             code. orv_last_error() has a sentence.
   Threads   A transform is only read by orv_trig_forward and its like, which any number of threads may call at once on
             arrays of their own. Rows are shared among threads, which does not change a bit of the results. */
#ifndef ORV_TRIG_H
#define ORV_TRIG_H

#include <orv/dft.h>
#include <orv/status.h>

typedef struct orv_trig orv_trig;

enum {
    ORV_TRIG_SINE = 0,
    ORV_TRIG_COSINE = 1,
    ORV_TRIG_STAGGERED_COSINE = 2,
    ORV_TRIG_STAGGERED_SINE = 3,
    ORV_TRIG_STAGGERED2_COSINE = 4,
    ORV_TRIG_STAGGERED2_SINE = 5
};

/* A transform of a kind, ready to run; *trig is not touched on failure. ORV_UNSUPPORTED if n is beyond the lengths of
   Fourier transforms, ORV_NO_MEMORY. Bad: 1 null; 2 neither ORV_DFT_SINGLE nor ORV_DFT_DOUBLE; 3 no kind; 4 below 1, or
   2 for ORV_TRIG_COSINE. */
ORV_API orv_status orv_trig_create(orv_trig** trig, int precision, int kind, int64_t points);

/* The same, for the careful way to compute; see Rounding above. */
ORV_API orv_status orv_trig_create_careful(orv_trig** trig, int precision, int kind, int64_t points);

/* Ends its life; null is allowed. */
ORV_API void orv_trig_free(orv_trig* trig);

/* The scales a and b above. With 1 and 1 both directions are sums as they stand. Bad: 1 null. */
ORV_API orv_status orv_trig_set_scales(orv_trig* trig, double forward, double backward);

/* The most threads that a call may use, up to 1024, where orv_get_num_threads() allows that many at the time of the
   call; 0, which is the default: as many as that. Bad: 1 null; 2 none of these. */
ORV_API orv_status orv_trig_set_threads(orv_trig* trig, int threads);

/* One row without gaps; `to` may be `from`, or a row that does not overlap it. The elements are floats or doubles, as
   the transform was created. ORV_NO_MEMORY, after which `to` may have been written to. Bad: 1, 2, 3 null. */
ORV_API orv_status orv_trig_forward(const orv_trig* trig, const void* from, void* to);
ORV_API orv_status orv_trig_backward(const orv_trig* trig, const void* from, void* to);

/* Many rows. Element j of row r stands at from[r*from_distance + j*from_stride], counted in elements, and becomes
   to[r*to_distance + j*to_stride]. In place, which is from == to, strides and distances must agree; else the arrays do
   not overlap. Of a matrix by columns with m rows, its columns are rows with stride 1 and distance m, and its rows are
   such with stride m and distance 1. Strides and distances of 0 or below are allowed; two elements of `to` must not
   share a place, which is not looked at. Bad: 1, 3, 6 null; 2 below 0; 7, 8 other than 4, 5 in place. */
ORV_API orv_status orv_trig_forward_rows(const orv_trig* trig, int64_t rows, const void* from, int64_t from_stride,
                                         int64_t from_distance, void* to, int64_t to_stride, int64_t to_distance);
ORV_API orv_status orv_trig_backward_rows(const orv_trig* trig, int64_t rows, const void* from, int64_t from_stride,
                                          int64_t from_distance, void* to, int64_t to_stride, int64_t to_distance);

#endif
