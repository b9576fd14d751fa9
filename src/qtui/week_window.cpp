#include "qtui/week_window.h"

#include <QButtonGroup>
#include <QDateEdit>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QRadioButton>
#include <QTableWidget>
#include <QVBoxLayout>

#include "base/clock.h"
#include "base/error.h"
#include "qtui/form_view.h"
#include "shell/ctr_zandorel.h"
#include "week/impression_semaine.h"
#include "week/ouverture_semaine.h"

namespace qtui {
namespace {

// Cell colours: what asks the planner's eye first is darkest.
const QColor kAnomalies(0xF4, 0xB4, 0xAC);
const QColor kComplete(0xFF, 0xD8, 0x8C);
const QColor kVide(0xF2, 0xF2, 0xF2);
const QColor kOrdinaire(0xFF, 0xFF, 0xFF);
const QColor kSansTournee(0xD4, 0xD4, 0xD4);
const QColor kAttente(0xDC, 0xEA, 0xFA);

QDate versQt(const base::Date& d) {
    return QDate(d.year(), d.month(), d.day());
}

base::Date depuisQt(const QDate& d) {
    return base::Date::fromDmy(d.day(), d.month(), d.year()).value_or(*base::Date::fromDmy(1, 1, 2000));
}

QString texte(const std::string& s) {
    return QString::fromStdString(s);
}

QColor couleur(const control::TourneeDuJour& jour) {
    if (jour.anomalies > 0) return kAnomalies;
    if (jour.nonDefinie || jour.prevues == 0) return kVide;
    if (jour.capacite > 0 && jour.minutes >= jour.capacite) return kComplete;
    return kOrdinaire;
}

QTableWidgetItem* cellule(const QString& contenu, const QColor& fond) {
    auto* item = new QTableWidgetItem(contenu);
    item->setTextAlignment(Qt::AlignCenter);
    item->setBackground(fond);
    item->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable);
    return item;
}

QLabel* pastille(const QColor& fond, const QString& legende) {
    auto* l = new QLabel(legende);
    l->setStyleSheet(
        QString("QLabel { background: %1; border: 1px solid #888; padding: 2px 8px; }").arg(fond.name()));
    return l;
}

}  // namespace

WeekWindow::WeekWindow(control::Ctr_Zandorel& ctl, FormView& screen, QWidget* parent)
    : QWidget(parent, Qt::Window), m_ctl(ctl), m_screen(screen) {
    setObjectName("WeekWindow");
    setWindowTitle("Semaine");
    auto* haut = new QHBoxLayout;
    auto* precedente = new QPushButton("◀ Semaine précédente");
    auto* suivante = new QPushButton("Semaine suivante ▶");
    m_date = new QDateEdit;
    m_date->setCalendarPopup(true);
    m_date->setDisplayFormat("dd/MM/yyyy");
    m_title = new QLabel;
    QFont gras = m_title->font();
    gras.setBold(true);
    gras.setPointSizeF(gras.pointSizeF() * 1.2);
    m_title->setFont(gras);
    m_morning = new QRadioButton("Matin");
    m_evening = new QRadioButton("Soir");
    m_morning->setChecked(true);
    auto* groupe = new QButtonGroup(this);
    groupe->addButton(m_morning);
    groupe->addButton(m_evening);
    auto* imprimer = new QPushButton("Imprimer");
    haut->addWidget(precedente);
    haut->addWidget(m_date);
    haut->addWidget(suivante);
    haut->addSpacing(16);
    haut->addWidget(m_title, 1);
    haut->addWidget(m_morning);
    haut->addWidget(m_evening);
    haut->addSpacing(16);
    haut->addWidget(imprimer);

    m_table = new QTableWidget(this);
    m_table->setColumnCount(7);
    m_table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_table->horizontalHeader()->setSectionResizeMode(QHeaderView::Stretch);
    // Two lines a row: the counts, and what stands out.
    m_table->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    m_table->verticalHeader()->setDefaultSectionSize(m_table->fontMetrics().height() * 2 + 10);
    m_table->setWordWrap(true);

    // The figures leave out what makes no sense; the planner must know what, to have it mended.
    m_defauts = new QLabel;
    m_defauts->setWordWrap(true);
    m_defauts->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_defauts->setStyleSheet("QLabel { color: #8b0000; }");
    m_defauts->hide();

    auto* legende = new QHBoxLayout;
    legende->addWidget(new QLabel("Interventions prévues · minutes, puis l'état du jour :"));
    legende->addWidget(pastille(kAnomalies, "anomalies"));
    legende->addWidget(pastille(kComplete, "complète"));
    legende->addWidget(pastille(kVide, "vide"));
    legende->addWidget(pastille(kSansTournee, "pas de tournée ce jour"));
    legende->addWidget(pastille(kAttente, "en attente"));
    legende->addStretch(1);
    legende->addWidget(new QLabel("Double clic : ouvrir la tournée et le jour"));

    auto* tout = new QVBoxLayout(this);
    tout->addLayout(haut);
    tout->addWidget(m_table, 1);
    tout->addWidget(m_defauts);
    tout->addLayout(legende);
    resize(1400, 800);

    connect(precedente, &QPushButton::clicked, this, [this] { m_date->setDate(m_date->date().addDays(-7)); });
    connect(suivante, &QPushButton::clicked, this, [this] { m_date->setDate(m_date->date().addDays(7)); });
    connect(m_date, &QDateEdit::dateChanged, this, [this] { refresh(); });
    connect(m_morning, &QRadioButton::toggled, this, [this] { refresh(); });
    connect(imprimer, &QPushButton::clicked, this, [this] { print(); });
    connect(m_table, &QTableWidget::cellDoubleClicked, this,
            [this](int row, int column) { openCell(row, column); });
}

WeekWindow& WeekWindow::showFor(control::Ctr_Zandorel& ctl, FormView& screen, QWidget* parent) {
    auto* fenetre = parent->findChild<WeekWindow*>("WeekWindow", Qt::FindDirectChildrenOnly);
    if (!fenetre) {
        fenetre = new WeekWindow(ctl, screen, parent);
        fenetre->showWeek(ctl.clock().today());
    } else {
        // The screen may have validated days since: the week shown is read again.
        fenetre->refresh();
    }
    fenetre->show();
    fenetre->raise();
    fenetre->activateWindow();
    return *fenetre;
}

void WeekWindow::showWeek(const base::Date& day) {
    const QDate qt = versQt(day);
    if (m_date->date() == qt && m_week) return refresh();
    m_date->setDate(qt);  // refreshes through dateChanged
    if (!m_week) refresh();
}

control::DemiJournee WeekWindow::halfDay() const {
    return m_evening->isChecked() ? control::DemiJournee::Soir : control::DemiJournee::Matin;
}

void WeekWindow::refresh() {
    m_week.reset();
    const base::Date jour = depuisQt(m_date->date());
    const std::shared_ptr<mvdb::Database>& db = m_ctl.Mod.fichiers.TheDatabase;
    setCursor(Qt::WaitCursor);
    try {
        if (!db) throw base::Error(base::codes::kNotBound, "Aucune base de données n'est ouverte");
        m_week = control::calculerSemaine(*db, m_ctl.clock(), jour, halfDay());
    } catch (const base::Error& e) {
        unsetCursor();
        fill();
        QMessageBox::warning(this, "Semaine", texte(e.what()));
        return;
    }
    unsetCursor();
    fill();
}

void WeekWindow::fill() {
    m_table->clearContents();
    m_codes.clear();
    if (!m_week) {
        m_table->setRowCount(0);
        m_title->clear();
        m_defauts->hide();
        return;
    }
    const control::Semaine& s = *m_week;
    const std::string nommes = control::defautsNommes(s);
    m_defauts->setText(texte(nommes).trimmed());
    m_defauts->setVisible(!nommes.empty());
    m_title->setText(texte("Semaine du " + s.lundi().longText()));
    QStringList jours;
    for (const control::JourDeSemaine& j : s.jours)
        jours << texte(std::string(base::weekdayName(j.date.weekday())) + " " + j.date.text().substr(0, 5));
    m_table->setHorizontalHeaderLabels(jours);

    const std::vector<control::LigneSemaine> lignes = control::lignesSemaine(s);
    m_table->setRowCount(static_cast<int>(lignes.size()) + 1);
    QStringList tetes;
    for (int r = 0; r < static_cast<int>(lignes.size()); ++r) {
        const control::LigneSemaine& ligne = lignes[static_cast<std::size_t>(r)];
        m_codes.push_back(ligne.code);
        tetes << texte(ligne.code + "  " + ligne.libelle);
        for (int d = 0; d < 7; ++d) {
            const control::TourneeDuJour* jour = ligne.jours[static_cast<std::size_t>(d)];
            if (!jour) {
                m_table->setItem(r, d, cellule("", kSansTournee));
                continue;
            }
            QString contenu = QString("%1 prév. · %2 min").arg(jour->prevues).arg(jour->minutes);
            const std::string etat = control::etatDuJour(*jour);
            if (!etat.empty()) contenu += "\n" + texte(etat);
            QTableWidgetItem* item = cellule(contenu, couleur(*jour));
            item->setToolTip(texte(jour->code + " " + jour->libelle + ", " +
                                   s.jours[static_cast<std::size_t>(d)].date.longText()));
            m_table->setItem(r, d, item);
        }
    }
    tetes << "En attente";
    const int derniere = static_cast<int>(lignes.size());
    for (int d = 0; d < 7; ++d) {
        const int n = s.jours[static_cast<std::size_t>(d)].enAttente;
        QTableWidgetItem* item = cellule(QString::number(n), kAttente);
        QFont gras = item->font();
        gras.setBold(true);
        item->setFont(gras);
        m_table->setItem(derniere, d, item);
    }
    m_table->setVerticalHeaderLabels(tetes);
    m_table->setCurrentCell(-1, -1);
}

bool WeekWindow::openCell(int row, int column) {
    if (!m_week || row < 0 || row >= static_cast<int>(m_codes.size()) || column < 0 || column > 6)
        return false;
    QTableWidgetItem* item = m_table->item(row, column);
    if (!item || item->text().isEmpty()) return false;
    const std::string code = m_codes[static_cast<std::size_t>(row)];
    const base::Date date = m_week->jours[static_cast<std::size_t>(column)].date;
    bool ouvert = false;
    m_screen.forward([&] { ouvert = control::ouvrirTourneeDuJour(m_ctl, code, date); });
    if (ouvert && m_screen.window()) {
        m_screen.window()->raise();
        m_screen.window()->activateWindow();
    }
    return ouvert;
}

void WeekWindow::print() {
    if (!m_week) return;
    const control::Semaine semaine = *m_week;
    m_screen.forward([&] { control::imprimerSemaine(m_ctl, semaine); });
}

}  // namespace qtui
