#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "base/error.h"
#include "toolkit/form.h"

namespace toolkit {

// A control array: element 0 is the invisible design-time model that every loaded element copies.
// Elements are visited in index order. Events of the elements reach the array's handlers with the
// element's index.
template <typename T>
class ControlArray : public ArrayBase {
public:
    ControlArray(std::string name, Control* parent) : m_name(std::move(name)), m_parent(parent) {
        auto model = std::make_unique<T>(m_name, parent);
        model->m_index = 0;
        model->setVisible(false);
        wire(*model);
        m_elements.emplace(0, std::move(model));
        root().registerArray(m_name, this);
    }

    const std::string& name() const { return m_name; }
    T& model() { return *m_elements.at(0); }

    // The element, or a failure naming it when it is not loaded.
    T& operator()(int index) const {
        auto it = m_elements.find(index);
        if (it == m_elements.end()) {
            throw base::Error(base::codes::kBadData,
                              "L'élément " + std::to_string(index) + " de " + m_name + " n'existe pas");
        }
        return *it->second;
    }
    bool exists(int index) const { return m_elements.count(index) != 0; }

    // Loads element `index` as a copy of the model, invisible; fails if it is loaded already.
    T& Load(int index) {
        if (index < 0 || exists(index)) {
            throw base::Error(base::codes::kBadData,
                              "L'élément " + std::to_string(index) + " de " + m_name +
                                  (index < 0 ? " ne peut pas exister" : " est déjà chargé"));
        }
        auto element = std::make_unique<T>(m_name, m_parent);
        element->m_index = index;
        element->m_quiet = true;
        element->copyFrom(model());
        element->setVisible(false);
        element->m_quiet = false;
        wire(*element);
        T& loaded = *element;
        m_elements.emplace(index, std::move(element));
        loaded.notify(Property::Loaded);
        return loaded;
    }

    // Unloads a loaded element; the model cannot be unloaded.
    void Unload(int index) {
        if (index == 0 || !exists(index)) {
            throw base::Error(base::codes::kBadData, "L'élément " + std::to_string(index) + " de " + m_name +
                                                         " ne peut pas être déchargé");
        }
        auto it = m_elements.find(index);
        it->second->notify(Property::Unloaded);
        m_elements.erase(it);
    }

    // Unloads every element but the model.
    void unloadAll() {
        while (m_elements.size() > 1)
            Unload(m_elements.rbegin()->first);
    }

    // Number of elements, the model included.
    int Count() const { return static_cast<int>(m_elements.size()); }
    int UBound() const { return m_elements.rbegin()->first; }

    Control* element(int index) const override { return exists(index) ? &(*this)(index) : nullptr; }
    std::vector<Control*> elements() const override {
        std::vector<Control*> out;
        for (const auto& [i, e] : m_elements)
            out.push_back(e.get());
        return out;
    }

    Control& loadElement(int index) override { return Load(index); }
    void unloadElement(int index) override { Unload(index); }

    std::function<void(int index)> Click, DblClick, GotFocus, LostFocus;
    std::function<void(int index, int button, int shift, double x, double y)> MouseDown, MouseUp, MouseMove;
    std::function<void(int index, Control& source, double x, double y, int state)> DragOver;
    std::function<void(int index, Control& source, double x, double y)> DragDrop;

private:
    Form& root() const {
        Form* form = m_parent->form();
        return *form;
    }

    void wire(T& e) {
        int i = e.m_index;
        e.Click = [this, i] {
            if (Click) Click(i);
        };
        e.DblClick = [this, i] {
            if (DblClick) DblClick(i);
        };
        e.GotFocus = [this, i] {
            if (GotFocus) GotFocus(i);
        };
        e.LostFocus = [this, i] {
            if (LostFocus) LostFocus(i);
        };
        e.MouseDown = [this, i](int b, int s, double x, double y) {
            if (MouseDown) MouseDown(i, b, s, x, y);
        };
        e.MouseUp = [this, i](int b, int s, double x, double y) {
            if (MouseUp) MouseUp(i, b, s, x, y);
        };
        e.MouseMove = [this, i](int b, int s, double x, double y) {
            if (MouseMove) MouseMove(i, b, s, x, y);
        };
        e.DragOver = [this, i](Control& src, double x, double y, int st) {
            if (DragOver) DragOver(i, src, x, y, st);
        };
        e.DragDrop = [this, i](Control& src, double x, double y) {
            if (DragDrop) DragDrop(i, src, x, y);
        };
    }

    std::string m_name;
    Control* m_parent;
    std::map<int, std::unique_ptr<T>> m_elements;
};

}  // namespace toolkit
