#pragma once

#include <cstddef>
#include <memory>
#include <vector>

namespace control {

class Ctr_Zandorel;

// The moves made on the day on show, to undo and redo them. A move is what editing changes in memory
// from one action of the planner: a drop from either pane with the pushes and the return it causes,
// chaining, the removal of an assignment. Each entry keeps the screen before and after its move: every
// property of every control with the loaded labels, the working tables, the instance state, the focus
// and the screen's pointer. An undo puts the labels, the scroll bar, the tables and the state back as
// they were before the move, and every other control that the move changed; a redo does the same with
// the screen after the move. A control that the move left alone stays as it is now.
class Historique {
public:
    explicit Historique(Ctr_Zandorel& ctl);
    ~Historique();
    Historique(const Historique&) = delete;
    Historique& operator=(const Historique&) = delete;

    bool peutAnnuler() const { return !m_annuler.empty(); }
    bool peutRetablir() const { return !m_retablir.empty(); }
    // How many moves an undo can take back one after the other.
    std::size_t annulables() const { return m_annuler.size(); }
    // Each does nothing when there is nothing to take back or make again.
    void annuler();
    void retablir();
    // Forgets every move: the day on show is left, shown anew, or saved.
    void vider();

    // A press that may begin a move: the screen before it is kept for the next move. A gesture that
    // changes nothing hands it on, so that undoing the next move also takes back what that gesture left
    // (the time shown under the pointer, the label pressed last).
    void debutGeste();

    // The span of one move; the entry is made at the end of the outermost span, unless the move
    // changed neither a label nor a table nor the state of the day. A move that fails halfway is
    // recorded all the same, so that what it did can be undone.
    class Deplacement {
    public:
        explicit Deplacement(Historique& historique);
        ~Deplacement();
        Deplacement(const Deplacement&) = delete;
        Deplacement& operator=(const Deplacement&) = delete;

    private:
        Historique& m_historique;
    };

    // The span of a display or a validation: the history is emptied at both ends and nothing is
    // recorded between them.
    class Oubli {
    public:
        explicit Oubli(Historique& historique);
        ~Oubli();
        Oubli(const Oubli&) = delete;
        Oubli& operator=(const Oubli&) = delete;

    private:
        Historique& m_historique;
    };

    // The oldest moves are forgotten beyond this many.
    static constexpr std::size_t kEntreesMax = 100;

private:
    struct Instantane;
    struct Entree {
        std::unique_ptr<Instantane> avant, apres;
    };
    std::unique_ptr<Instantane> capturer() const;
    // Puts the screen back as `vers` has it: the labels, the scroll bar, the tables and the state whole,
    // the other controls where `depuis` differs from it.
    void restaurer(const Instantane& vers, const Instantane& depuis);

    Ctr_Zandorel& m_ctl;
    std::vector<Entree> m_annuler, m_retablir;
    std::unique_ptr<Instantane> m_avantGeste;  // the screen before the gestures not yet recorded
    std::unique_ptr<Instantane> m_debut;       // the screen at the start of the move under way
    int m_profondeur = 0;                      // nested spans of moves
    int m_oublis = 0;                          // nested spans of displays and validations
};

}  // namespace control
