#pragma once

// Clock arithmetic. The system writes times two ways: H.MM, minutes as the two decimals
// (8.30 is half past eight), and hundredths of an hour (8.50 is half past eight). Intermediates are
// kept in 32-bit floats on purpose: that single precision removes the noise of the decimal
// subtraction ((8.30 - 8) * 100 is exactly 30 as a float), and results depend on it.
// Both run at every mouse move of a drag: they allocate nothing.
namespace model {

// Hundredths of an hour to H.MM, rounded to the nearest five minutes, halves up. 23.99 gives 24.00:
// the carry is not wrapped. Not defined for negative times.
double CentiemesVersHeure(double valeur);

// H.MM to hundredths of an hour, not rounded to five minutes (8.05 gives 8.08). Nothing checks the
// range: 8.60 gives 9.00.
double HeureVersCentiemes(double valeur);

}  // namespace model
