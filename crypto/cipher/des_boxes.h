#pragma once

/// The S-boxes of DES as gates, for bit planes: six planes of input, the first of which is the highest bit, and four of output. The
/// circuits were found by a search over decompositions into smaller functions and pairs of what is already there.
namespace ccrypto::des {

template <typename Lane, typename Word = typename Lane::Register>
[[gnu::always_inline]] inline void Box1(Word x0, Word x1, Word x2, Word x3, Word x4, Word x5, Word& y0, Word& y1, Word& y2,
                                        Word& y3)
{
    const Word g1 = ~x1, g2 = g1 ^ x4, g3 = x1 | g2, g4 = g3 & ~x2, g5 = g2 ^ g4;
    const Word g6 = g3 ^ g5, g7 = g6 & x5, g8 = g5 & ~x5, g9 = g7 | g8, g10 = x2 & x4;
    const Word g11 = g10 ^ g4, g12 = x4 | g6, g13 = g12 ^ x1, g14 = g13 & x5, g15 = g11 & ~x5;
    const Word g16 = g14 | g15, g17 = g16 & x0, g18 = g9 ^ g17, g19 = g3 & ~x5, g20 = g14 | g19;
    const Word g21 = x2 & ~x4, g22 = g11 & ~g2, g23 = g22 & ~x5, g24 = g21 ^ g23, g25 = g24 & ~x0;
    const Word g26 = g20 ^ g25, g27 = g26 & ~x3, g28 = g18 ^ g27, g29 = x4 ^ g13, g30 = x2 & ~x1;
    const Word g31 = g30 ^ x4, g32 = g31 & x5, g33 = g29 ^ g32, g34 = x5 | g21, g35 = g34 ^ g8;
    const Word g36 = g35 & x0, g37 = g33 ^ g36, g38 = g1 ^ g21, g39 = g38 & ~x5, g40 = g29 ^ g39;
    const Word g41 = g34 ^ g40, g42 = g41 ^ g23, g43 = g42 & x0, g44 = g40 ^ g43, g45 = g44 & ~x3;
    const Word g46 = g37 ^ g45, g47 = g1 ^ g31, g48 = g47 ^ x5, g49 = g4 & ~g42, g50 = g49 ^ g30;
    const Word g51 = g50 & x0, g52 = g48 ^ g51, g53 = x4 | g1, g54 = x2 ^ g47, g55 = g54 & x5;
    const Word g56 = g53 ^ g55, g57 = g53 & ~g9, g58 = g57 ^ g32, g59 = g58 & ~x0, g60 = g56 ^ g59;
    const Word g61 = g60 & x3, g62 = g52 ^ g61, g63 = g6 | g41, g64 = g63 ^ g48, g65 = g8 | g56;
    const Word g66 = g65 ^ g4, g67 = g66 & ~x0, g68 = g64 ^ g67, g69 = x1 ^ g10, g70 = ~g13;
    const Word g71 = g70 & x5, g72 = g69 ^ g71, g73 = g7 ^ g63, g74 = g73 ^ x5, g75 = g74 & ~x0;
    const Word g76 = g72 ^ g75, g77 = g76 & x3, g78 = g68 & ~x3, g79 = g77 | g78;
    y0 = g62;
    y1 = g46;
    y2 = g28;
    y3 = g79;
}

template <typename Lane, typename Word = typename Lane::Register>
[[gnu::always_inline]] inline void Box2(Word x0, Word x1, Word x2, Word x3, Word x4, Word x5, Word& y0, Word& y1, Word& y2,
                                        Word& y3)
{
    const Word g1 = x4 ^ x5, g2 = g1 ^ x0, g3 = x4 & x5, g4 = ~g3, g5 = g4 & ~x0;
    const Word g6 = g3 ^ g5, g7 = g6 & x1, g8 = g2 ^ g7, g9 = x0 | g6, g10 = g5 & ~x5;
    const Word g11 = g10 & x1, g12 = g9 ^ g11, g13 = x0 & x5, g14 = g13 & x4, g15 = g12 ^ g14;
    const Word g16 = g15 & ~x2, g17 = g8 ^ g16, g18 = g5 & ~x4, g19 = g18 ^ x0, g20 = g19 & ~x1;
    const Word g21 = g9 ^ g20, g22 = x4 & g20, g23 = g22 & x5, g24 = g21 ^ g23, g25 = g24 & x3;
    const Word g26 = g17 ^ g25, g27 = g6 ^ g19, g28 = ~g2, g29 = g28 & x1, g30 = g27 & ~x1;
    const Word g31 = g29 | g30, g32 = x0 ^ g10, g33 = g2 ^ g27, g34 = g33 & x1, g35 = g32 ^ g34;
    const Word g36 = g35 & x2, g37 = g31 ^ g36, g38 = x4 | g11, g39 = g38 ^ g20, g40 = g21 & ~g18;
    const Word g41 = g40 ^ g10, g42 = g41 & x2, g43 = g39 ^ g42, g44 = g43 & ~x3, g45 = g37 ^ g44;
    const Word g46 = x1 ^ g28, g47 = x5 | g34, g48 = g47 ^ x1, g49 = g48 & x2, g50 = g46 ^ g49;
    const Word g51 = ~g33, g52 = g51 & x1, g53 = g9 ^ g52, g54 = g3 & ~x2, g55 = g53 ^ g54;
    const Word g56 = g55 & x3, g57 = g50 ^ g56, g58 = g38 ^ g48, g59 = g58 ^ g22, g60 = g6 & ~g58;
    const Word g61 = g60 ^ g34, g62 = g61 & ~x2, g63 = g59 ^ g62, g64 = g40 & g61, g65 = g64 ^ g9;
    const Word g66 = g65 & x3, g67 = g63 ^ g66;
    y0 = g26;
    y1 = g57;
    y2 = g45;
    y3 = g67;
}

template <typename Lane, typename Word = typename Lane::Register>
[[gnu::always_inline]] inline void Box3(Word x0, Word x1, Word x2, Word x3, Word x4, Word x5, Word& y0, Word& y1, Word& y2,
                                        Word& y3)
{
    const Word g1 = x4 & ~x5, g2 = ~g1, g3 = g2 & x1, g4 = g1 ^ g3, g5 = x1 | x5;
    const Word g6 = g5 ^ g1, g7 = g6 & ~x3, g8 = g4 ^ g7, g9 = x4 ^ x5, g10 = x4 | g2;
    const Word g11 = g10 & ~x1, g12 = g9 ^ g11, g13 = x1 ^ g6, g14 = g13 & x3, g15 = g12 ^ g14;
    const Word g16 = g15 & x2, g17 = g8 & ~x2, g18 = g16 | g17, g19 = g3 & ~x5, g20 = x4 & x5;
    const Word g21 = g20 ^ x1, g22 = g21 & x3, g23 = g19 ^ g22, g24 = g23 & ~x2, g25 = g10 ^ g24;
    const Word g26 = g25 & x0, g27 = g18 ^ g26, g28 = ~g9, g29 = ~x4, g30 = g29 & x3;
    const Word g31 = g28 ^ g30, g32 = g31 ^ g11, g33 = x4 & ~x2, g34 = g32 ^ g33, g35 = x3 | g28;
    const Word g36 = g35 ^ g19, g37 = g9 | g11, g38 = g37 ^ x4, g39 = x1 & x5, g40 = g39 & x3;
    const Word g41 = g38 ^ g40, g42 = g41 & x2, g43 = g36 ^ g42, g44 = g43 & x0, g45 = g34 ^ g44;
    const Word g46 = x1 ^ g29, g47 = g4 ^ g12, g48 = g47 & x3, g49 = g46 & ~x3, g50 = g48 | g49;
    const Word g51 = g1 ^ g47, g52 = g51 & ~x3, g53 = g12 ^ g52, g54 = g53 & x2, g55 = g50 & ~x2;
    const Word g56 = g54 | g55, g57 = x3 ^ g47, g58 = g57 ^ x1, g59 = g4 & ~x2, g60 = g58 ^ g59;
    const Word g61 = g60 & x0, g62 = g56 & ~x0, g63 = g61 | g62, g64 = g58 & ~g30, g65 = g64 ^ g1;
    const Word g66 = x3 | g6, g67 = g66 & x2, g68 = g65 ^ g67, g69 = g7 & g58, g70 = g69 ^ g3;
    const Word g71 = g5 ^ g30, g72 = g71 & x2, g73 = g70 ^ g72, g74 = g73 & x0, g75 = g68 & ~x0;
    const Word g76 = g74 | g75;
    y0 = g63;
    y1 = g27;
    y2 = g76;
    y3 = g45;
}

template <typename Lane, typename Word = typename Lane::Register>
[[gnu::always_inline]] inline void Box4(Word x0, Word x1, Word x2, Word x3, Word x4, Word x5, Word& y0, Word& y1, Word& y2,
                                        Word& y3)
{
    const Word g1 = ~x3, g2 = ~x2, g3 = g2 & x4, g4 = g1 ^ g3, g5 = x4 & ~g4;
    const Word g6 = g5 ^ x2, g7 = g6 & x1, g8 = g4 ^ g7, g9 = g1 | g6, g10 = g6 & ~g4;
    const Word g11 = g10 ^ x3, g12 = g11 & x1, g13 = g9 ^ g12, g14 = g13 & x0, g15 = g8 ^ g14;
    const Word g16 = x3 | x4, g17 = g16 ^ x2, g18 = ~g10, g19 = g18 & x1, g20 = g17 ^ g19;
    const Word g21 = g11 & ~g4, g22 = g3 & x1, g23 = g21 ^ g22, g24 = g23 & x0, g25 = g20 ^ g24;
    const Word g26 = g25 & ~x5, g27 = g15 ^ g26, g28 = x4 ^ g4, g29 = g28 ^ x2, g30 = x3 ^ g5;
    const Word g31 = g30 & x1, g32 = g29 ^ g31, g33 = g13 ^ g18, g34 = g33 ^ x1, g35 = g34 & ~x0;
    const Word g36 = g32 ^ g35, g37 = g1 ^ g20, g38 = g37 ^ x4, g39 = g32 | g34, g40 = g39 ^ g11;
    const Word g41 = g40 & ~x0, g42 = g38 ^ g41, g43 = g42 & ~x5, g44 = g36 ^ g43, g45 = ~g15;
    const Word g46 = g15 ^ g25, g47 = g46 & x5, g48 = g45 & ~x5, g49 = g47 | g48, g50 = g42 ^ g44;
    const Word g51 = g50 ^ x5;
    y0 = g49;
    y1 = g27;
    y2 = g51;
    y3 = g44;
}

template <typename Lane, typename Word = typename Lane::Register>
[[gnu::always_inline]] inline void Box5(Word x0, Word x1, Word x2, Word x3, Word x4, Word x5, Word& y0, Word& y1, Word& y2,
                                        Word& y3)
{
    const Word g1 = x2 ^ x3, g2 = g1 ^ x0, g3 = x3 & x0, g4 = ~g3, g5 = g4 & ~x2;
    const Word g6 = x2 | g5, g7 = g6 & x4, g8 = g2 ^ g7, g9 = x0 ^ g4, g10 = g2 & ~x3;
    const Word g11 = g10 & ~x4, g12 = g9 ^ g11, g13 = g12 & x5, g14 = g8 ^ g13, g15 = x2 & g9;
    const Word g16 = g15 ^ x0, g17 = g16 ^ g7, g18 = g10 & g12, g19 = ~g18, g20 = g19 & x5;
    const Word g21 = g17 ^ g20, g22 = g21 & x1, g23 = g14 & ~x1, g24 = g22 | g23, g25 = x2 & ~g2;
    const Word g26 = g5 ^ g10, g27 = g26 ^ x3, g28 = g27 & x4, g29 = g25 ^ g28, g30 = g8 | g15;
    const Word g31 = g30 ^ g19, g32 = g31 & x5, g33 = g29 ^ g32, g34 = g1 | g4, g35 = x3 & ~x0;
    const Word g36 = g35 & ~x4, g37 = g34 ^ g36, g38 = ~g15, g39 = g2 ^ g38, g40 = g39 & x4;
    const Word g41 = g38 & ~x4, g42 = g40 | g41, g43 = g42 & x5, g44 = g37 & ~x5, g45 = g43 | g44;
    const Word g46 = g45 & x1, g47 = g33 ^ g46, g48 = g3 | g15, g49 = g1 & ~g10, g50 = g49 & x4;
    const Word g51 = g48 & ~x4, g52 = g50 | g51, g53 = x0 | g10, g54 = g2 ^ g27, g55 = g54 & x4;
    const Word g56 = g53 ^ g55, g57 = g56 & x5, g58 = g52 ^ g57, g59 = g38 | g55, g60 = g59 ^ g52;
    const Word g61 = g31 & ~g50, g62 = g61 ^ g10, g63 = g62 & ~x5, g64 = g60 ^ g63, g65 = g64 & x1;
    const Word g66 = g58 ^ g65, g67 = g60 ^ g61, g68 = g67 ^ g56, g69 = g60 & ~g12, g70 = g69 ^ g25;
    const Word g71 = g70 & x5, g72 = g68 ^ g71, g73 = g5 | g60, g74 = g73 ^ g29, g75 = x2 ^ g30;
    const Word g76 = g75 & x5, g77 = g74 ^ g76, g78 = g77 & ~x1, g79 = g72 ^ g78;
    y0 = g47;
    y1 = g24;
    y2 = g79;
    y3 = g66;
}

template <typename Lane, typename Word = typename Lane::Register>
[[gnu::always_inline]] inline void Box6(Word x0, Word x1, Word x2, Word x3, Word x4, Word x5, Word& y0, Word& y1, Word& y2,
                                        Word& y3)
{
    const Word g1 = x0 ^ x3, g2 = x0 & x3, g3 = g2 & x2, g4 = g1 ^ g3, g5 = x2 | x3;
    const Word g6 = g5 & ~x1, g7 = g4 ^ g6, g8 = ~g2, g9 = x0 | x3, g10 = g9 & x2;
    const Word g11 = g8 ^ g10, g12 = g11 & x4, g13 = g7 ^ g12, g14 = g2 | g10, g15 = g14 & x1;
    const Word g16 = g9 & ~x1, g17 = g15 | g16, g18 = x3 & ~g14, g19 = x3 & ~x0, g20 = g19 & x1;
    const Word g21 = g18 ^ g20, g22 = g21 & ~x4, g23 = g17 ^ g22, g24 = g23 & x5, g25 = g13 ^ g24;
    const Word g26 = x2 ^ g1, g27 = x0 | x2, g28 = g27 & ~x1, g29 = g26 ^ g28, g30 = x2 ^ g19;
    const Word g31 = g30 & x1, g32 = g27 ^ g31, g33 = g32 & x4, g34 = g29 ^ g33, g35 = ~g9;
    const Word g36 = g11 | g19, g37 = g36 & x1, g38 = g35 ^ g37, g39 = g18 ^ g37, g40 = g39 ^ g10;
    const Word g41 = g40 & ~x4, g42 = g38 ^ g41, g43 = g42 & x5, g44 = g34 ^ g43, g45 = x1 & ~x2;
    const Word g46 = g45 ^ g1, g47 = g14 ^ g35, g48 = g47 & ~x4, g49 = g46 ^ g48, g50 = g6 | g26;
    const Word g51 = g50 ^ g3, g52 = g8 & ~g5, g53 = g52 ^ x0, g54 = ~g36, g55 = g54 & ~x1;
    const Word g56 = g53 ^ g55, g57 = g56 & x4, g58 = g51 ^ g57, g59 = g58 & x5, g60 = g49 ^ g59;
    const Word g61 = x0 ^ x2, g62 = g11 ^ g18, g63 = g62 & ~x1, g64 = g61 ^ g63, g65 = g52 | g56;
    const Word g66 = g65 ^ g19, g67 = g66 & x4, g68 = g64 ^ g67, g69 = g31 | g36, g70 = g69 ^ g2;
    const Word g71 = g20 ^ g55, g72 = g71 & x4, g73 = g70 ^ g72, g74 = g73 & x5, g75 = g68 ^ g74;
    y0 = g60;
    y1 = g75;
    y2 = g44;
    y3 = g25;
}

template <typename Lane, typename Word = typename Lane::Register>
[[gnu::always_inline]] inline void Box7(Word x0, Word x1, Word x2, Word x3, Word x4, Word x5, Word& y0, Word& y1, Word& y2,
                                        Word& y3)
{
    const Word g1 = ~x3, g2 = g1 & ~x2, g3 = x3 ^ g2, g4 = g3 & x4, g5 = x2 & ~x4;
    const Word g6 = g4 | g5, g7 = x3 ^ g4, g8 = g7 & x0, g9 = g6 ^ g8, g10 = g3 & ~g5;
    const Word g11 = g10 ^ x2, g12 = g1 | g7, g13 = g12 ^ g6, g14 = g13 & x0, g15 = g11 ^ g14;
    const Word g16 = g15 & x5, g17 = g9 ^ g16, g18 = x3 ^ g12, g19 = g18 ^ x2, g20 = g6 & ~x3;
    const Word g21 = g20 ^ g11, g22 = g21 & ~x0, g23 = g19 ^ g22, g24 = g3 & g11, g25 = x2 ^ g21;
    const Word g26 = g25 & x0, g27 = g24 ^ g26, g28 = g27 & x5, g29 = g23 ^ g28, g30 = g29 & x1;
    const Word g31 = g17 & ~x1, g32 = g30 | g31, g33 = g1 ^ g6, g34 = g33 ^ x2, g35 = g1 ^ g10;
    const Word g36 = g35 & x0, g37 = g34 ^ g36, g38 = x2 & g4, g39 = g38 ^ x0, g40 = g39 & ~x5;
    const Word g41 = g37 ^ g40, g42 = ~g19, g43 = g2 | g4, g44 = g43 & x0, g45 = g42 ^ g44;
    const Word g46 = x0 & ~g19, g47 = g46 ^ g12, g48 = g47 & ~x5, g49 = g45 ^ g48, g50 = g49 & x1;
    const Word g51 = g41 ^ g50, g52 = g20 ^ g39, g53 = g15 | g18, g54 = g53 & x5, g55 = g52 ^ g54;
    const Word g56 = ~x2, g57 = g45 & ~g26, g58 = g57 ^ x2, g59 = g58 & x5, g60 = g56 ^ g59;
    const Word g61 = g60 & x1, g62 = g55 ^ g61, g63 = g39 & ~g46, g64 = g63 ^ g1, g65 = x0 | g6;
    const Word g66 = g65 & ~x5, g67 = g64 ^ g66, g68 = x4 | g37, g69 = g68 ^ x3, g70 = g2 | g57;
    const Word g71 = g70 ^ g53, g72 = g71 & x5, g73 = g69 ^ g72, g74 = g73 & ~x1, g75 = g67 ^ g74;
    y0 = g32;
    y1 = g51;
    y2 = g75;
    y3 = g62;
}

template <typename Lane, typename Word = typename Lane::Register>
[[gnu::always_inline]] inline void Box8(Word x0, Word x1, Word x2, Word x3, Word x4, Word x5, Word& y0, Word& y1, Word& y2,
                                        Word& y3)
{
    const Word g1 = x4 & ~x3, g2 = ~x4, g3 = g2 & x2, g4 = g1 ^ g3, g5 = x2 | x3;
    const Word g6 = g5 ^ g1, g7 = g6 & x1, g8 = g4 ^ g7, g9 = x2 | g2, g10 = g9 ^ x4;
    const Word g11 = g1 & x1, g12 = g10 ^ g11, g13 = g12 & x0, g14 = g8 ^ g13, g15 = x1 & ~g6;
    const Word g16 = x3 | x4, g17 = g5 ^ g9, g18 = g17 & x1, g19 = g16 ^ g18, g20 = g19 & x0;
    const Word g21 = g15 & ~x0, g22 = g20 | g21, g23 = g22 & ~x5, g24 = g14 ^ g23, g25 = g2 & ~x3;
    const Word g26 = g25 ^ x2, g27 = x3 ^ x4, g28 = g27 ^ x2, g29 = g28 & x1, g30 = g26 & ~x1;
    const Word g31 = g29 | g30, g32 = x4 | g29, g33 = g32 ^ g3, g34 = g33 & x0, g35 = g31 ^ g34;
    const Word g36 = g28 & ~g3, g37 = x2 ^ x4, g38 = g37 & x1, g39 = g36 ^ g38, g40 = x3 | g17;
    const Word g41 = g2 ^ g17, g42 = g41 & ~x1, g43 = g40 ^ g42, g44 = g43 & x0, g45 = g39 & ~x0;
    const Word g46 = g44 | g45, g47 = g46 & x5, g48 = g35 ^ g47, g49 = g4 ^ g30, g50 = g49 ^ x4;
    const Word g51 = g7 ^ g41, g52 = g51 & x0, g53 = g50 ^ g52, g54 = x2 | g10, g55 = g8 & g26;
    const Word g56 = g55 ^ g27, g57 = g56 & x0, g58 = g54 ^ g57, g59 = g58 & x5, g60 = g53 ^ g59;
    const Word g61 = x1 & g16, g62 = g61 ^ g4, g63 = g25 ^ g56, g64 = g63 & ~x0, g65 = g62 ^ g64;
    const Word g66 = g54 ^ g65, g67 = g66 ^ g35, g68 = g67 & x5, g69 = g65 ^ g68;
    y0 = g69;
    y1 = g60;
    y2 = g24;
    y3 = g48;
}

} // namespace ccrypto::des
