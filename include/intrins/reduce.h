/* intrins/reduce.h - Array reductions: ALL, ANY, COUNT, SUM, PRODUCT, MAXVAL, MINVAL, MAXLOC, MINLOC, DOT_PRODUCT.
   Included by intrins.h; include that header, not this one. */
#ifndef INTRINS_REDUCE_H
#define INTRINS_REDUCE_H

#ifdef __cplusplus
extern "C" {
#endif

/* Each takes the address of an ArgList; results go through its Result slot. */
void f90_all1(ArgList *a);
void f90_all2(ArgList *a);
void f90_all4(ArgList *a);
void f90_all8(ArgList *a);
void f90_any1(ArgList *a);
void f90_any2(ArgList *a);
void f90_any4(ArgList *a);
void f90_any8(ArgList *a);
void f90_count1(ArgList *a);
void f90_count2(ArgList *a);
void f90_count4(ArgList *a);
void f90_count8(ArgList *a);
void f90_kcount1(ArgList *a);
void f90_kcount2(ArgList *a);
void f90_kcount4(ArgList *a);
void f90_kcount8(ArgList *a);
void f90_sumi1(ArgList *a);
void f90_sumi2(ArgList *a);
void f90_sumi4(ArgList *a);
void f90_sumi8(ArgList *a);
void f90_sumr4(ArgList *a);
void f90_sumr8(ArgList *a);
void f90_sumr10(ArgList *a);
void f90_sumr16(ArgList *a);
void f90_sumc8(ArgList *a);
void f90_sumc16(ArgList *a);
void f90_sumc20(ArgList *a);
void f90_sumc32(ArgList *a);
void f90_prodi1(ArgList *a);
void f90_prodi2(ArgList *a);
void f90_prodi4(ArgList *a);
void f90_prodi8(ArgList *a);
void f90_prodr4(ArgList *a);
void f90_prodr8(ArgList *a);
void f90_prodr10(ArgList *a);
void f90_prodr16(ArgList *a);
void f90_prodc8(ArgList *a);
void f90_prodc16(ArgList *a);
void f90_prodc20(ArgList *a);
void f90_prodc32(ArgList *a);
void f90_maxvali1(ArgList *a);
void f90_maxvali2(ArgList *a);
void f90_maxvali4(ArgList *a);
void f90_maxvali8(ArgList *a);
void f90_maxvalr4(ArgList *a);
void f90_maxvalr8(ArgList *a);
void f90_maxvalr10(ArgList *a);
void f90_maxvalr16(ArgList *a);
void f90_minvali1(ArgList *a);
void f90_minvali2(ArgList *a);
void f90_minvali4(ArgList *a);
void f90_minvali8(ArgList *a);
void f90_minvalr4(ArgList *a);
void f90_minvalr8(ArgList *a);
void f90_minvalr10(ArgList *a);
void f90_minvalr16(ArgList *a);
void f90_maxloci1(ArgList *a);
void f90_maxloci2(ArgList *a);
void f90_maxloci4(ArgList *a);
void f90_maxloci8(ArgList *a);
void f90_maxlocr4(ArgList *a);
void f90_maxlocr8(ArgList *a);
void f90_maxlocr10(ArgList *a);
void f90_maxlocr16(ArgList *a);
void f90_minloci1(ArgList *a);
void f90_minloci2(ArgList *a);
void f90_minloci4(ArgList *a);
void f90_minloci8(ArgList *a);
void f90_minlocr4(ArgList *a);
void f90_minlocr8(ArgList *a);
void f90_minlocr10(ArgList *a);
void f90_minlocr16(ArgList *a);
void f90_kmaxloci1(ArgList *a);
void f90_kmaxloci2(ArgList *a);
void f90_kmaxloci4(ArgList *a);
void f90_kmaxloci8(ArgList *a);
void f90_kmaxlocr4(ArgList *a);
void f90_kmaxlocr8(ArgList *a);
void f90_kminloci1(ArgList *a);
void f90_kminloci2(ArgList *a);
void f90_kminloci4(ArgList *a);
void f90_kminloci8(ArgList *a);
void f90_kminlocr4(ArgList *a);
void f90_kminlocr8(ArgList *a);
void f90_dotpri1(ArgList *a);
void f90_dotpri2(ArgList *a);
void f90_dotpri4(ArgList *a);
void f90_dotpri8(ArgList *a);
void f90_dotprl1(ArgList *a);
void f90_dotprl2(ArgList *a);
void f90_dotprl4(ArgList *a);
void f90_dotprl8(ArgList *a);
void f90_dotprr4(ArgList *a);
void f90_dotprr8(ArgList *a);
void f90_dotprr10(ArgList *a);
void f90_dotprr16(ArgList *a);
void f90_dotprc8(ArgList *a);
void f90_dotprc16(ArgList *a);
void f90_dotprc20(ArgList *a);
void f90_dotprc32(ArgList *a);

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif /* INTRINS_REDUCE_H */
