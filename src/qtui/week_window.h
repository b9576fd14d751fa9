#pragma once

#include <QWidget>
#include <optional>

#include "week/semaine.h"

class QDateEdit;
class QLabel;
class QRadioButton;
class QTableWidget;

namespace control {
class Ctr_Zandorel;
}

namespace qtui {

class FormView;

// The week at a glance beside the planning screen: tournées as rows, Monday to Sunday as columns, the
// waiting interventions of each day in the last row. The week and the half-day are chosen at the top; a
// double click opens that tournée and day on the screen; Imprimer prints the table. It reads the
// database through the figures of the week and never changes the screen but on a double click.
class WeekWindow : public QWidget {
public:
    WeekWindow(control::Ctr_Zandorel& ctl, FormView& screen, QWidget* parent = nullptr);

    // The one window of `parent`, made on first use on the week of the screen's day; shown again, it
    // reads its week anew.
    static WeekWindow& showFor(control::Ctr_Zandorel& ctl, FormView& screen, QWidget* parent);

    // Computes the week that holds `day` and shows it; a failure is told in a box and leaves the table
    // empty.
    void showWeek(const base::Date& day);
    const std::optional<control::Semaine>& week() const { return m_week; }
    QTableWidget& table() const { return *m_table; }
    // The records the week left aside and why, as the display would tell them; hidden when none.
    const QLabel& defauts() const { return *m_defauts; }
    // What a double click on a cell does; false when no tournée runs there or the screen stayed.
    bool openCell(int row, int column);

private:
    void refresh();
    void fill();
    void print();
    control::DemiJournee halfDay() const;

    control::Ctr_Zandorel& m_ctl;
    FormView& m_screen;
    QDateEdit* m_date;
    QLabel* m_title;
    QLabel* m_defauts;
    QRadioButton* m_morning;
    QRadioButton* m_evening;
    QTableWidget* m_table;
    std::optional<control::Semaine> m_week;
    std::vector<std::string> m_codes;  // the code of each row but the last
};

}  // namespace qtui
